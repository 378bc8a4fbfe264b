#include "support/LoopbackPort.h"
#include "support/RunningReader.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/reader/Sanitizers.h"

#include <filesystem>

#include <linux/landlock.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace zelvar::test {
namespace {

bool KernelBarsWriting() {
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) >= 1;
}

/// What the driver tells of the file: how its attempts ended.
std::string InfoOf(RunningReader &reader, std::string const &path, std::uint64_t image = 1) {
    auto const answer = reader.talk->Ask(OpenImage(ImageSpec(image, "HOSTILE", path)));
    if (answer == nullptr || answer->body.AsImageOpened() == nullptr)
        return "not opened: " + FailureIn(answer);
    return answer->body.AsImageOpened()->info;
}

TEST(ReaderProgram, ReadsThroughModulesThatItIsToldToLoad) {
    TempFolder const folder;
    std::string const path = folder.Write("a.hostile", "members 3\ntype 4\n");
    RunningReader reader;
    auto const drivers = reader.talk->Ask(wire::ListDriversT{});
    ASSERT_NE(drivers, nullptr);
    EXPECT_EQ(drivers->body.AsDrivers()->trees.at(0)->id, "HOSTILE");
    EXPECT_EQ(drivers->body.AsDrivers()->rasters.at(0)->extensions, "*.hostile");
    auto const children = reader.talk->Ask(ListChildren(TreeSpec(1, "HOSTILE", path), path));
    ASSERT_NE(children->body.AsChildren(), nullptr) << FailureIn(children);
    EXPECT_EQ(children->body.AsChildren()->nodes.size(), 3U);

    auto const memory = wire::SharedMemory::Create(32);
    EXPECT_EQ(FailureIn(reader.talk->Ask(ReadPixels(ImageSpec(1, "HOSTILE", path), 32), memory->File())), "not failed");
    std::int16_t sample = 0;
    std::memcpy(&sample, static_cast<char const *>(memory->Data()) + 30, sizeof sample);
    EXPECT_EQ(sample, 33);
}

TEST(ReaderProgram, AModuleThatIsNoneLeavesALineAndNoDrivers) {
    RunningReader reader("local", -1, "/no/such/module.so");
    auto const answer = reader.talk->Ask(wire::ListDriversT{});
    ASSERT_NE(answer, nullptr);
    EXPECT_TRUE(answer->body.AsDrivers()->trees.empty());
    ASSERT_FALSE(answer->log.empty());
    EXPECT_THAT(answer->log.back()->text, HasSubstr("no drivers: /no/such/module.so"));
}

TEST(ReaderProgram, StartedByHandItSaysWhatItIs) {
    SocketPair const pair;
    auto const status = wire::SharedMemory::Create(sizeof(wire::ReaderStatus));
    auto const small = wire::SharedMemory::Create(sizeof(wire::ReaderStatus) - 1);
    FileDescriptor const plain(open("/dev/zero", O_RDWR | O_CLOEXEC));
    std::vector<std::vector<std::string>> cases = {
        {}, {"--help"}, {"100", "101", "local"}, {"100", "101", "anywhere", "m.so"}};
    for (char const *socket : {"x", "100 ", "-1", "0", "101", "99999999999999999999"}) // 101 is none
        cases.push_back({socket, "101", "local", "m.so"});
    for (char const *memory : {"100", "102", "103", "200"}) // no memory, unsealed, too little, not open
        cases.push_back({"100", memory, "local", "m.so"});
    for (auto const &[broker, terms] : {std::pair("m.so", "m.so"), // no descriptors; no records; no sealed terms
                                        {"102", "101"},
                                        {"104", "104"},
                                        {"104", "102"},
                                        {"104", "101"}})
        cases.push_back({"100", "101", "connection", broker, terms, "m.so"});
    cases.push_back({"100", "101", "connection", "104", "101"});
    std::array<int, 2> records{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, records.data()), 0);
    FileDescriptor const ours(records[0]);
    FileDescriptor const theirs(records[1]);
    for (auto &words : cases) {
        std::array<int, 2> errors{};
        ASSERT_EQ(pipe2(errors.data(), O_CLOEXEC), 0);
        words.insert(words.begin(), ZELVAR_READER);
        End const end = WaitFor(Spawn(words, {{pair.ends[1], 100},
                                              {status->File(), 101},
                                              {plain.Get(), 102},
                                              {small->File(), 103},
                                              {theirs.Get(), 104},
                                              {errors[1], STDERR_FILENO}}));
        close(errors[1]);
        std::array<char, 1000> text{};
        EXPECT_GT(read(errors[0], text.data(), text.size() - 1), 0);
        close(errors[0]);
        std::string const said = text.data();
        EXPECT_TRUE(end.IsExit(2)) << testing::PrintToString(words);
        EXPECT_THAT(said, testing::StartsWith("zelvar-reader: "));
        EXPECT_EQ(said.find('\n'), said.size() - 1) << "one line";
    }
}

TEST(ReaderProgram, ADriverChangesNoFile) {
    TempFolder const folder;
    std::string const victim = folder.Write("victim", "bytes");
    std::filesystem::permissions(victim, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    auto const before = std::filesystem::last_write_time(victim);
    std::string const barred = KernelBarsWriting() ? "errno 13" : "done";
    Rows<std::string, std::string> const cases = {
        {"write " + (folder / "new"), barred}, {"write " + victim, barred},
        {"remove " + victim, barred},          {"mkdir " + (folder / "sub"), barred},
        {"truncate " + victim, "errno 1"},     {"chmod " + victim, "errno 1"},
        {"touch " + victim, "errno 1"},        {"flags " + victim, "errno 1"},
        {"project " + victim, "errno 1"},      {"write /dev/null", "done"}};
    RunningReader reader("network"); // which is allowed the most
    std::uint64_t image = 0;
    for (auto const &[action, outcome] : cases) {
        std::string const path = folder.Write(std::to_string(image) + ".hostile", "open " + action + "\n");
        EXPECT_THAT(InfoOf(reader, path, ++image), testing::EndsWith(": " + outcome)) << action;
    }
    if (!KernelBarsWriting())
        return;
    EXPECT_EQ(ReadFile(victim), "bytes");
    EXPECT_EQ(std::filesystem::last_write_time(victim), before);
    EXPECT_FALSE(std::filesystem::exists(folder / "new") || std::filesystem::exists(folder / "sub"));
}

TEST(ReaderProgram, ADriverStartsNoProcessAndReachesNone) {
    TempFolder const folder;
    std::string const path =
        folder.Write("a.hostile", "open fork\nopen exec\nopen thread\nopen signal " + std::to_string(getpid()) + "\n");
    for (char const *reach : {"local", "network"}) {
        RunningReader reader(reach);
        EXPECT_EQ(InfoOf(reader, path), "fork: errno 1; exec: errno 1; thread: done; signal: errno 1") << reach;
    }
}

TEST(ReaderProgram, OnlyANetworkReaderConnects) {
    TempFolder const folder;
    LoopbackPort const listener;
    std::string const path = folder.Write("a.hostile", "open connect " + listener.Port() + "\n");
    RunningReader local("local");
    EXPECT_EQ(InfoOf(local, path), "connect: errno 13");
    RunningReader network("network");
    EXPECT_EQ(InfoOf(network, path), "connect: done");
}

TEST(ReaderProgram, NothingElseThatIsOpenIsInherited) {
    SocketPair pair;
    RunningReader reader("local", pair.ends[1]);
    close(pair.ends[1]);
    ASSERT_NE(reader.talk->Ask(wire::ListDriversT{}), nullptr); // it runs, and would hold the pair open
    pollfd wanted{.fd = pair.ends[0], .events = POLLIN, .revents = 0};
    EXPECT_EQ(poll(&wanted, 1, 0), 1);
    EXPECT_NE(wanted.revents & POLLHUP, 0);
    close(pair.ends[0]);
}

TEST(ReaderProgram, EndsWithTheTalkWhateverItsDriverDoes) {
    TempFolder const folder;
    for (char const *action : {"spin", "sleep 3000"}) {
        std::string const path = folder.Write("a.hostile", std::string("open ") + action + "\n");
        RunningReader reader;
        reader.AwaitBegin(reader.talk->Send(OpenImage(ImageSpec(1, "HOSTILE", path))));
        reader.Close();
        EXPECT_TRUE(reader.Wait().IsExit(0)) << action;
    }
}

TEST(ReaderProgram, ACrashIsItsEndAndTheStatusTellsTheFile) {
    TempFolder const folder;
    auto const inSharedMemory = [] {
        std::filesystem::directory_iterator const entries("/dev/shm");
        return std::set<std::filesystem::path>(begin(entries), end(entries));
    };
    auto const before = inSharedMemory();
    for (char const *action : {"crash", "overflow", "abort", "exit 3"}) {
        std::string const path = folder.Write("a.hostile", std::string("open ") + action + "\n");
        struct stat info {};
        ASSERT_EQ(stat(path.c_str(), &info), 0);
        RunningReader reader;
        reader.talk->Ask(wire::ListDriversT{});
        std::uint64_t const number = reader.talk->Send(OpenTree(TreeSpec(1, "HOSTILE", path)));
        EXPECT_EQ(reader.talk->Receive(), nullptr) << action;
        EXPECT_EQ(reader.talk->result, ReaderTalk::Result::Gone) << action;
        EXPECT_TRUE(reader.Wait().IsCrash()) << action;
        EXPECT_EQ(reader.Status().number, number) << action;
        EXPECT_EQ(reader.Status().size, info.st_size) << action;
        EXPECT_EQ(reader.Status().modified % 1'000'000'000, info.st_mtim.tv_nsec) << action;
    }
    EXPECT_EQ(inSharedMemory(), before);
}

TEST(ReaderProgram, AReadThatPollsIsStopped) {
    TempFolder const folder;
    std::string const path = folder.Write("a.hostile", "read poll 3000\n");
    RunningReader reader;
    auto const memory = wire::SharedMemory::Create(16);
    std::uint64_t const number = reader.talk->Send(ReadPixels(ImageSpec(1, "HOSTILE", path), 16), memory->File());
    reader.AwaitBegin(number);
    reader.talk->Stop(number);
    EXPECT_EQ(FailureIn(reader.talk->Receive()), "stopped");
}

TEST(ReaderProgram, ARequestTakesNoMoreMemoryThanItMay) {
    constexpr std::uint64_t megabyte = 1U << 20U;
    TempFolder const folder;
    std::string const path = folder.Write("a.hostile", "open allocate 150\n");
    RunningReader reader;
    reader.talk->memory = 100 * megabyte;
    // A sanitizer takes memory as it likes.
    std::uint64_t number = 0;
    EXPECT_EQ(FailureIn(reader.talk->Ask(OpenImage(ImageSpec(++number, "HOSTILE", path)))),
              reader::kIsSanitized ? "not failed" : "out of memory");
    for (std::uint64_t const enough : {200 * megabyte, std::uint64_t{0}, ~std::uint64_t{0}}) { // above what is held
        reader.talk->memory = enough;
        EXPECT_EQ(FailureIn(reader.talk->Ask(OpenImage(ImageSpec(++number, "HOSTILE", path)))), "not failed");
    }
}

} // namespace
} // namespace zelvar::test
