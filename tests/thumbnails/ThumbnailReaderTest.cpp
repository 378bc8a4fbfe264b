#include "zelvar/thumbnails/ThumbnailReader.h"

#include "support/HostileFiles.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/RequestScope.h"

#include <condition_variable>

#include <sys/resource.h>

namespace zelvar {
namespace {

/// A reader of thumbnails, and what it has answered.
struct ThumbnailReading : test::HostileFiles {
    ~ThumbnailReading() override {
        m_reader->Release();
        m_reader.reset();
        // Their threads hold them, and drivers that are to go.
        for (std::weak_ptr<ThumbnailReader> const &reader : m_readers)
            while (!reader.expired())
                std::this_thread::yield();
    }
    void Want(std::vector<std::string> const &files, int side = 96) {
        std::vector<ThumbnailReader::Wish> wishes;
        for (std::string const &file : files)
            wishes.push_back({.name = file, .moniker = file});
        m_reader->Want(std::move(wishes), side);
    }
    /// Until so many have been answered; the names with a picture, in the order in which they came.
    std::vector<std::string> Await(std::size_t answers) {
        std::vector<std::string> with;
        std::unique_lock lock(m_mutex);
        for (std::size_t count = 0; count < answers;) {
            if (!m_changed.wait_for(lock, std::chrono::seconds(60), [this] { return m_isTold; })) {
                ADD_FAILURE() << "only " << count << " answers";
                break;
            }
            m_isTold = false;
            lock.unlock();
            for (ThumbnailReader::Answer const &answer : m_reader->Take()) {
                ++count;
                m_width = answer.picture.GetWidth();
                if (answer.picture.HasData())
                    with.push_back(answer.name);
            }
            lock.lock();
        }
        return with;
    }
    std::shared_ptr<ThumbnailReader> Create() {
        auto reader = ThumbnailReader::Create(ThumbnailStore(m_cache), {}, [this] {
            std::lock_guard const lock(m_mutex);
            m_isTold = true;
            m_changed.notify_all();
        });
        m_readers.emplace_back(reader);
        return reader;
    }
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isTold = false;
    int m_width = 0; ///< of the last answer's picture
    DString const m_cache = folder.Folder("cache");
    std::vector<std::weak_ptr<ThumbnailReader>> m_readers; ///< all that were made
    std::shared_ptr<ThumbnailReader> m_reader = Create();
};

TEST_F(ThumbnailReading, FilesThatEndReadersLeaveTheRestAndAreNotTriedAgain) {
    std::vector<std::string> files;
    for (char const *const how :
         {"read crash", "read overflow", "open abort", "read exit 3", "open exit 0", "describe crash"})
        files.push_back(Write("bad " + std::string(how), how));
    std::vector<std::string> good;
    for (int i = 0; i < 6; ++i)
        files.push_back(good.emplace_back(Write("good " + std::to_string(i), "")));
    Want(files);
    EXPECT_THAT(Await(12), testing::UnorderedElementsAreArray(good));
    ThumbnailReader::Counts const counts = m_reader->GetCounts();
    EXPECT_EQ(std::tuple(counts.looked, counts.found, counts.opened, counts.made), std::tuple(12, 0, 12, 6));

    // Another process: nothing is opened, not even those without one.
    m_reader->Release();
    m_reader = Create();
    Want(files);
    EXPECT_THAT(Await(12), testing::UnorderedElementsAreArray(good));
    EXPECT_EQ(m_reader->GetCounts().opened, 0);
    EXPECT_EQ(m_reader->GetCounts().found, 12);
    Want({good.front()}, 5);
    EXPECT_EQ(Await(1).size(), 1U);
    EXPECT_EQ(m_width, 5) << "from the one that is kept";
}

TEST_F(ThumbnailReading, WhatIsNotWantedAnyMoreIsDroppedAndTheNewestComesFirst) {
    std::string const go = folder / "go";
    std::vector<std::string> first{Write("a", "read await " + go), Write("b", "read await " + go)};
    std::vector<std::string> dropped;
    for (int i = 0; i < 20; ++i)
        dropped.push_back(Write("dropped " + std::to_string(i), ""));
    std::vector<std::string> all = first;
    all.insert(all.end(), dropped.begin(), dropped.end());
    Want(all);
    while (m_reader->GetCounts().opened < 2 || m_reader->GetCounts().looked < 22)
        std::this_thread::yield();
    std::vector<std::string> wanted = first;
    for (int i = 0; i < 3; ++i)
        wanted.push_back(Write("newest " + std::to_string(i), ""));
    Want(wanted);
    folder.Write("go");
    EXPECT_THAT(Await(5), testing::UnorderedElementsAreArray(wanted));
    EXPECT_FALSE(m_reader->IsBusy());
    EXPECT_EQ(m_reader->GetCounts().opened, 5) << "none of those that were dropped";
}

TEST_F(ThumbnailReading, WhatTakesLongEndsOnceNobodyWantsIt) {
    Want({Write("a", "read poll 60"), Write("b", "read poll 60")});
    while (m_reader->GetCounts().opened < 2)
        std::this_thread::yield();
    std::string const wanted = Write("wanted", "");
    Want({wanted});
    EXPECT_THAT(Await(1), testing::ElementsAre(wanted)) << "the others have no answer";
}

TEST_F(ThumbnailReading, APreviewWaitsForNoThumbnail) {
    ReaderSettings settings;
    settings.imageReaders = 1;
    Use(settings);
    std::string const go = folder / "go";
    Want({Write("a", "read await " + go), Write("b", "read await " + go), Write("c", "")});
    while (m_reader->GetCounts().opened < 2)
        std::this_thread::yield();
    DCanvas picture;
    EXPECT_TRUE(ReadPreview({Write("preview", ""), nullptr}, "", nullptr, picture)) << "both of theirs are busy";
    EXPECT_EQ(m_reader->GetCounts().made, 0);
    folder.Write("go");
    EXPECT_EQ(Await(3).size(), 3U);
}

TEST_F(ThumbnailReading, LettingGoWaitsForNothing) {
    Want({Write("deaf", "read sleep 5")});
    while (m_reader->GetCounts().opened < 1)
        std::this_thread::yield();
    auto const begin = test::Clock::now();
    m_reader->Release();
    EXPECT_LT(test::Since(begin), std::chrono::seconds(4));
}

} // namespace
} // namespace zelvar
