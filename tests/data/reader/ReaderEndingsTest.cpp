#include "support/HostileFiles.h"
#include "support/Processes.h"
#include "support/SilentMount.h"
#include "zelvar/base/DString.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/reader/Sanitizers.h"

#include <filesystem>
#include <thread>

namespace zelvar::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using namespace std::chrono_literals;

constexpr bool kIsSanitized = reader::kIsSanitized;

struct ReaderEndings : HostileFiles {
    /// Children of this process that have ended and that nobody has asked about.
    static auto CountZombies() {
        return std::ranges::count(ChildrenOf(getpid()), 'Z', &std::pair<pid_t const, char>::second);
    }
    static ReaderSettings Short(milliseconds time) {
        ReaderSettings settings;
        for (RequestBudget &budget : settings.budgets)
            budget.time = time;
        return settings;
    }
    /// The least time of three that the work takes: what the code needs, without what a loaded machine adds.
    static milliseconds BestOfThree(std::function<void()> const &work) {
        milliseconds best{1'000'000};
        for (int i = 0; i < 3; ++i) {
            auto const begin = Clock::now();
            work();
            best = std::min(best, Since(begin));
        }
        return best;
    }
};

TEST_F(ReaderEndings, ADriverThatEndsItsReaderFailsThatRequestAlone) {
    struct Case {
        char const *text;
        char const *reason;
        bool onlyPlain = false; ///< a sanitizer has its own words for it
    };
    int expected = 0;
    for (Case const &test : {Case{"open crash\n", "signal 11", true}, Case{"open overflow\n", "signal 11", true},
                             Case{"open abort\n", "signal 6"}, Case{"open exit 3\n", "ended with code 3"},
                             Case{"open babble\n", "its reader"}, Case{"open close\n", "its reader"}}) {
        std::string const file = Write("bad" + std::to_string(expected), test.text);
        {
            Image const image(file);
            EXPECT_FALSE(image) << test.text;
            EXPECT_EQ(image.error.Why(), DError::Cause::Crashed) << test.text;
            if (!test.onlyPlain || !kIsSanitized) {
                EXPECT_THAT(image.error.Text(), HasSubstr(test.reason)) << test.text;
                EXPECT_THAT(ReaderFailureOf(file), HasSubstr(test.reason)) << test.text;
            }
        }
        EXPECT_EQ(CountReaders().crashed, ++expected) << test.text;
        // Not tried again while it is as it was.
        EXPECT_EQ(Image(file).error.Why(), DError::Cause::Crashed);
        EXPECT_EQ(CountReaders().crashed, expected) << test.text;
        // Tried again once it has changed.
        static_cast<void>(Write("bad" + std::to_string(expected - 1), "width 3\nheight 3\n# mended\n"));
        EXPECT_TRUE(Image(file)) << test.text;
        EXPECT_EQ(ReaderFailureOf(file), "") << test.text;
    }
    static_cast<void>(folder.Write("data.hostile/.zgroup", "open abort\n"));
    std::string const data = folder / "data.hostile";
    EXPECT_FALSE(Image(data));
    EXPECT_FALSE(Image(data));
    EXPECT_EQ(CountReaders().crashed, ++expected);
    static_cast<void>(folder.Write("data.hostile/.zgroup", "width 3\n")); // of which the folder does not know
    EXPECT_TRUE(Image(data));

    DString const file = Write("bad", "open abort\n");
    EXPECT_FALSE(Image(file));
    EndReaders(); // which forgets
    EXPECT_EQ(ReaderFailureOf(file), "");
    EXPECT_FALSE(Image(file));
    EXPECT_EQ(CountReaders().crashed, 1) << "it is tried again";
}

TEST_F(ReaderEndings, ACrashAfterTheOpeningEndsTheImageButNotTheOthers) {
    Image const good(Write("good", "width 3\nheight 1\n"));
    ASSERT_TRUE(good);
    Image const bad(Write("bad", "read crash\n"));
    ASSERT_TRUE(bad);
    EXPECT_TRUE(bad.Read(0).empty());
    EXPECT_EQ(good.Read(0), (std::vector<unsigned char>{0, 1, 2}));
    EXPECT_TRUE(bad.Read(0).empty());
    EXPECT_EQ(CountReaders().crashed, 1);
}

TEST_F(ReaderEndings, WhatDriversThrowIsAnAnswerAndTheReaderGoesOn) {
    int const started = (static_cast<void>(Image(Write("a", ""))), CountReaders().started);
    for (char const *text : {"open throw bang\n", "open fail\n"})
        EXPECT_FALSE(Image(Write("bad", text))) << text;
    EXPECT_EQ(CountReaders().started, started);
    EXPECT_EQ(CountReaders().crashed + CountReaders().killed, 0);
}

TEST_F(ReaderEndings, AStoppedOrLateRequestEndsSoonWhateverItsDriverDoes) {
    constexpr int time = 300; // ms
    int number = 0;
    for (bool const isStopped : {true, false}) {
        Use(isStopped ? ReaderSettings() : Short(milliseconds(time)));
        ASSERT_TRUE(Image(Write("warm", "")));
        for (char const *text : {"open sleep 30\n", "open spin\n", "open poll 30\n"}) {
            milliseconds const best = BestOfThree([&] {
                std::string const file = Write("slow" + std::to_string(number++), text);
                StopSignal stop{false};
                // The reader has begun by then, or is about to: both must end.
                std::thread stopper([&] { std::this_thread::yield(), stop = isStopped; });
                Image const image(file, {}, &stop);
                EXPECT_FALSE(image);
                stopper.join();
                DString const failure = ReaderFailureOf(file);
                // On a machine with many others at work one that spins may not get its time.
                bool const isShort = failure.find("got less than 0.3 s") != DString::npos;
                EXPECT_EQ(image.error.Why(), isStopped ? DError::Cause::Unknown
                                             : isShort ? DError::Cause::NoAnswer
                                                       : DError::Cause::Late);
                EXPECT_EQ(image.error.Detail(), isStopped || isShort ? -1 : time);
                EXPECT_THAT(failure, HasSubstr(isStopped || isShort ? "" : "longer than 0.3 s"));
                EXPECT_EQ(failure.empty(), isStopped) << "a stop is nobody's fault";
            });
            // One that is busy has its time in pieces on a busy machine; those that sleep show what is given.
            int const given = isStopped ? 0 : std::string_view(text) == "open spin\n" ? 20 * time : time;
            // The driver takes 30 s: who waited for it is seen beside any number of busy programs.
            EXPECT_LT(best, milliseconds(2000 + given)) << text;
        }
        EXPECT_TRUE(Image(Write("good", "")));
    }
}

TEST_F(ReaderEndings, LateProbesOfAListingCostItsPatienceAndNoMore) {
    ReaderSettings settings;
    settings.probeInListing = milliseconds(60);
    settings.patience = milliseconds(120);
    Use(settings);
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    std::vector<std::string> files;
    for (int i = 0; i < 20; ++i)
        files.push_back(Write("slow" + std::to_string(i), "probe sleep 30\nmembers 2\n"));
    RequestScope const listing(RequestKind::List);
    for (std::string const &file : files) {
        RequestScope const probe(RequestKind::Probe);
        EXPECT_FALSE(driver->CanReadPath(file));
        EXPECT_TRUE(probe.IsUnanswered());
    }
    EXPECT_LE(CountReaders().killed, 4);
    EXPECT_GE(CountReaders().killed, 1);
}

TEST_F(ReaderEndings, AFileWhoseProbeWasLateIsAskedAgainByThoseWhoGiveMoreTime) {
    std::string const file = Write("slow", "probe sleep 0.4\nmembers 2\n");
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    EXPECT_FALSE(driver->CanReadPath(file));
    int const killed = CountReaders().killed;
    EXPECT_FALSE(driver->CanReadPath(file)) << "not asked";
    EXPECT_EQ(CountReaders().killed, killed);
    EXPECT_TRUE(
        RefItemPtr<NtwDataSourceItem>(NtwDataSourceItem::CreateItem(file.c_str(), nullptr, nullptr))->IsFolder())
        << "somebody has named it";
}

TEST_F(ReaderEndings, AReaderThatWaitsForAProcessorIsNotLate) {
    std::string const file = Write("busy", "probe work 0.02\nmembers 2\n"); // of 0.05 s
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    std::atomic<bool> isOver{false};
    std::vector<std::thread> others(4 * std::thread::hardware_concurrency());
    for (std::thread &other : others)
        other = std::thread([&] {
            while (!isOver)
                ;
        });
    EXPECT_TRUE(kIsSanitized || driver->CanReadPath(file)) << ReaderFailureOf(file);
    isOver = true;
    for (std::thread &other : others)
        other.join();
}

TEST_F(ReaderEndings, ARequestThatOutgrowsItsMemoryFailsAlone) {
    ReaderSettings settings;
    for (RequestBudget &budget : settings.budgets)
        budget.memory = 100 * ReaderSettings::kMebibyte;
    Use(settings);
    Image const good(Write("good", "width 3\nheight 1\n"));
    ASSERT_TRUE(good);
    for (char const *text : {"open allocate 3000\n", "read allocate 3000\n"}) {
        Image const image(Write("large", text));
        EXPECT_TRUE(!image || image.Read(0).empty()) << text;
        DError const error = image ? image.driver->GetReadError(image.handle) : image.error;
        EXPECT_EQ(error.Why(), DError::Cause::TooLarge) << text << error.Text();
        EXPECT_GE(error.Detail(), 100 << 20U) << text;
    }
    EXPECT_FALSE(good.Read(0).empty());
}

TEST_F(ReaderEndings, TwoHundredCrashesLeaveNothingBehind) {
    int const crashes = kIsSanitized ? 20 : 200;
    test::TempFolder const temporary;
    setenv("TMPDIR", temporary.Path().c_str(), 1); // the readers' alone, unlike the system's
    ASSERT_TRUE(Image(Write("warm", "")));
    std::size_t const files = CountIn("/proc/self/fd");
    for (int i = 0; i < crashes; ++i)
        EXPECT_FALSE(Image(Write("bad" + std::to_string(i), i % 2 == 0 ? "open crash\n" : "open abort\n")));
    EXPECT_EQ(CountReaders().crashed, crashes);
    EXPECT_TRUE(Image(Write("good", "")));
    EXPECT_EQ(CountZombies(), 0);
    EXPECT_LE(CountReaders().alive, 2);
    EXPECT_LE(CountIn("/proc/self/fd"), files);
    EXPECT_EQ(CountIn(temporary.Path()), 0U);
    for (auto const &entry : std::filesystem::directory_iterator("/dev/shm"))
        EXPECT_EQ(entry.path().string().find("zelvar"), std::string::npos) << entry.path();
    unsetenv("TMPDIR");
}

TEST_F(ReaderEndings, AReaderHeldByTheKernelIsLeftBehindAndItsPlaceGetsNoWork) {
    test::SilentMount mount("image.hostile");
    if (!mount.IsMounted()) {
        EXPECT_NE(getuid(), 0U) << "the superuser can mount";
        return;
    }
    ASSERT_TRUE(Image(Write("warm", "")));
    auto const begin = Clock::now();
    StopSignal stop{false};
    std::thread stopper([&] {
        while (!mount.IsSomebodyHeld())
            std::this_thread::yield();
        stop = true;
    });
    EXPECT_FALSE(Image(mount.File(), {}, &stop));
    stopper.join();
    EXPECT_EQ(CountReaders().leftBehind, 1);
    int const started = CountReaders().started;
    {
        Image const again(mount.File());
        EXPECT_FALSE(again);
        EXPECT_EQ(again.error.Why(), DError::Cause::NoAnswer);
    }
    EXPECT_EQ(CountReaders().started, started) << "no work for that place";
    EXPECT_TRUE(Image(Write("good", ""))) << "other places go on";
    mount.Answer();
    while (CountReaders().leftBehind > 0 && Since(begin) < 20s)
        std::this_thread::yield();
    EXPECT_EQ(CountReaders().leftBehind, 0);
    EXPECT_EQ(CountZombies(), 0);
}

TEST_F(ReaderEndings, APlaceThatDoesNotAnswerIsFoundOutByAReader) {
    test::SilentMount mount("image.hostile");
    if (!mount.IsMounted()) {
        EXPECT_NE(getuid(), 0U) << "the superuser can mount";
        return;
    }
    ASSERT_TRUE(Image(Write("warm", "")));
    EXPECT_TRUE(DoesPlaceAnswer(Write("here", "")));
    EXPECT_TRUE(DoesPlaceAnswer(mount.File()));
    mount.FallSilent();
    EXPECT_TRUE(DoesPlaceAnswer(mount.File())) << "an answer holds: a typed path is asked about several times";
    while (DoesPlaceAnswer(mount.File()))
        std::this_thread::yield();
    auto const begin = Clock::now();
    EXPECT_FALSE(DoesPlaceAnswer(mount.File()));
    EXPECT_EQ(RefItemPtr<NtwDataSourceItem>(NtwDataSourceItem::CreateItem(mount.File().c_str(), nullptr, nullptr)),
              nullptr);
    EXPECT_LT(Since(begin), 20s);
    EXPECT_EQ(CountReaders().leftBehind, 1) << "who asked again was told at once";
    mount.Answer();
    while (CountReaders().leftBehind > 0 && Since(begin) < 40s)
        std::this_thread::yield();
    EXPECT_EQ(CountReaders().leftBehind, 0);
}

} // namespace
} // namespace zelvar::test
