#include "support/HostileFiles.h"
#include "support/OpenedTree.h"
#include "support/Processes.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/ImageReader.h"
#include "zelvar/data/ProbeAhead.h"
#include "zelvar/data/RequestScope.h"

#include <thread>

#include <fcntl.h>

namespace zelvar {
namespace {

using std::chrono::milliseconds;
using test::HostileFiles;

using Readers = HostileFiles;

TEST_F(Readers, AnImageIsWhatItsDriverSays) {
    Image const image(Write("a", "width 30\nheight 7\nbands 6\n"));
    ASSERT_TRUE(image) << image.error.Text();
    EXPECT_EQ(image.driver->GetId(), "HOSTILE");
    EXPECT_EQ(image.driver->GetNumChnl(image.handle), 6);
    for (int const channel : {0, 5}) { // with the opening, and asked for
        EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, channel), 30);
        EXPECT_EQ(image.driver->GetChnlSizeY(image.handle, channel), 7);
        EXPECT_EQ(image.driver->GetChnlDataType(image.handle, channel), RDI_UInt8);
    }
    EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, 6), 0);
    EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, -1), 0);
    std::vector<unsigned char> const samples = image.Read(1);
    ASSERT_EQ(samples.size(), 210U);
    std::vector<unsigned char> several(420);
    auto const read = [&](int channel, int count) {
        return image.driver->ReadChannelsRsmpl(image.handle, channel, count, 0, 0, 30, 7, several.data(), 30, 7, 0,
                                               true, true);
    };
    for (auto const &[channel, count] : {std::pair{-1, 1}, {-1, 2}, {0, 0}, {5, 2}, {6, 1}})
        EXPECT_FALSE(read(channel, count)) << channel;
    ASSERT_TRUE(read(1, 2));
    EXPECT_TRUE(std::equal(samples.begin(), samples.end(), several.begin()));
    EXPECT_EQ(image.driver->IsMyFile((folder / "a.hostile").c_str()), 1);
    EXPECT_EQ(image.driver->IsMyFile((folder / "none.hostile").c_str()), 0);
    EXPECT_EQ(samples[0], 100);
    EXPECT_EQ(samples[3 * 30 + 4], 134);
}

TEST_F(Readers, SizesThatNoMemoryHoldsAreRefused) {
    Image const image(Write("a", "width 30\nheight 7\n"));
    ASSERT_TRUE(image);
    unsigned char sample = 0;
    for (auto const &[width, height] : {std::pair{0, 5}, {-1, 5}, {2'000'000'000, 2'000'000'000}})
        EXPECT_FALSE(image.driver->ReadBlockRsmpl(image.handle, 0, 0, 0, 30, 7, &sample, width, height, 0, true, true));
    EXPECT_FALSE(image.driver->ReadPaletteRsmpl(image.handle, 0, 0, 30, 7, nullptr, 5, 5));
    EXPECT_EQ(image.Read(0).size(), 210U);
}

TEST_F(Readers, TreesAndImagesOutliveTheirReaders) {
    test::OpenedTree const tree(Write("tree", "members 5000\n"));
    ASSERT_TRUE(tree);
    Image const image(Write("a", "width 3\nheight 2\n"));
    ASSERT_TRUE(image);
    for (int round = 0; round < 2; ++round) {
        std::vector<BDINode> const children = tree.Children(*tree.root, BDINode_Raster);
        ASSERT_EQ(children.size(), 5000U);
        EXPECT_EQ(children[4999].name, "member 4999");
        EXPECT_EQ(tree.Node(children[17].path).value_or(BDINode()).name, "member 17");
        EXPECT_EQ(image.Read(0), (std::vector<unsigned char>{0, 1, 2, 10, 11, 12}));
        EndReaders();
    }
}

TEST_F(Readers, AProbeAsksForAllDriversAtOnceAndOncePerScope) {
    std::string const tree = Write("tree", "members 3\n");
    std::string const plain = Write("plain", "width 3\n");
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    RequestScope const scope(RequestKind::Probe, {}, std::chrono::seconds(20));
    EXPECT_TRUE(driver->CanReadPath(tree));
    EXPECT_FALSE(driver->CanReadPath(plain));
    EXPECT_FALSE(scope.IsUnanswered());
}

TEST_F(Readers, ProbesAheadFindTheContainersAmongManyFilesAndTheOneThatCrashes) {
    ReaderSettings settings;
    settings.probeInListing = std::chrono::seconds(20);
    Use(settings);
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    for (char const *bad : {"", "probe crash\n"}) {
        std::vector<DString> paths;
        ProbeAhead::Files files;
        for (int i = 0; i < 300; ++i)
            paths.push_back(Write("f" + std::to_string(i), i % 7 == 0 ? "members 2\n" : i == 150 ? bad : "width 3\n"));
        RequestScope const listing(RequestKind::List);
        for (DString const &path : paths)
            files.push_back({path});
        ProbeAhead ahead(files, {});
        ahead.Wait();
        for (std::size_t i = 0; i < paths.size(); ++i) {
            RequestScope const probe(RequestKind::Probe);
            EXPECT_EQ(driver->CanReadPath(paths[i]), i % 7 == 0) << i;
        }
    }
    // Together with others, and then alone: the rest was asked about one by one. On a slow machine the question about
    // many is late instead.
    EXPECT_GE(CountReaders().crashed, 1);
    EXPECT_LE(CountReaders().crashed + CountReaders().killed, 4);
}

TEST_F(Readers, AFileIsAskedAboutAgainWhenItsStateIsAnother) {
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("HOSTILE");
    ASSERT_NE(driver, nullptr);
    DString const path = Write("f", "members 2\n");
    FileState const settled{.device = 1, .inode = 2, .size = 3, .modified = 4, .changed = 5};
    FileState other = settled;
    ++other.changed;
    std::int64_t const now = std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
    auto const reads = [&](FileState const &state) {
        RequestScope const listing(RequestKind::List, {}, std::chrono::seconds(20));
        ProbeAhead ahead({{path, state}}, {});
        ahead.Wait();
        return driver->CanReadPath(path);
    };
    for (auto const &[state, isKept] :
         test::Rows<FileState, bool>{{settled, true},
                                     {{.device = 1, .size = 3, .changed = 5}, false},
                                     {{.device = 1, .inode = 3, .size = 3, .modified = 4}, false},
                                     {{.device = 1, .inode = 4, .size = 3, .changed = now}, false}}) {
        std::ignore = Write("f", "members 2\n");
        EXPECT_TRUE(reads(state));
        std::ignore = Write("f", "width 3\n");
        EXPECT_EQ(reads(state), isKept) << state.inode;
    }
    EXPECT_FALSE(reads(other));
    EXPECT_TRUE(reads(settled));
    EndReaders();
    EXPECT_FALSE(reads(settled));
}

TEST_F(Readers, APreviewDoesNotWaitForAListing) {
    std::string const slow = Write("slow", "members 3\nlist poll 30\n");
    std::atomic<bool> stop{false};
    std::atomic<bool> listing{false};
    test::OpenedTree const tree(slow);
    ASSERT_TRUE(tree);
    std::thread lister([&] {
        RequestScope const scope(RequestKind::List, [&] { return listing = true, stop.load(); });
        EXPECT_TRUE(tree.Children(*tree.root, BDINode_Raster).empty());
        EXPECT_TRUE(scope.IsUnanswered());
    });
    while (!listing)
        std::this_thread::yield();
    DCanvas canvas;
    EXPECT_TRUE(ReadPreview({Write("a", "width 64\nheight 64\nbands 3\n"), nullptr}, "", nullptr, canvas));
    EXPECT_EQ(canvas.GetWidth(), 1024);
    stop = true;
    lister.join();
}

TEST_F(Readers, AReaderStartsWhateverNumbersItsFilesHaveHere) {
    DString const path = Write("a", "width 8\n");
    std::vector<std::unique_ptr<FileDescriptor>> others;
    for (int i = 0; i < 30; ++i) {
        Image const image(path);
        EXPECT_TRUE(image) << i << ": " << image.error.Text();
        EXPECT_EQ(CountReaders().crashed, 0) << i;
        EndReaders(); // so that the next one's files come behind all others
        others.push_back(std::make_unique<FileDescriptor>(open("/dev/null", O_RDONLY | O_CLOEXEC)));
    }
}

TEST_F(Readers, ManyThreadsGetTheirOwnAnswers) {
    constexpr int threads = 8;
    std::vector<std::string> files;
    for (int i = 0; i < threads; ++i)
        files.push_back(
            Write("t" + std::to_string(i), i == 3   ? "open crash\n"
                                           : i == 5 ? "open fail\n"
                                                    : "width " + std::to_string(10 + i) + "\nheight 3\nbands 2\n"));
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([&, i] {
            for (int round = 0; round < 10; ++round) {
                Image const image(files[static_cast<std::size_t>(i)]);
                if (i == 3 || i == 5) {
                    EXPECT_FALSE(image);
                    continue;
                }
                ASSERT_TRUE(image) << image.error.Text();
                EXPECT_EQ(image.driver->GetChnlSizeX(image.handle, 1), 10 + i);
                EXPECT_EQ(image.Read(1).at(2), 102);
            }
        });
    for (std::thread &worker : workers)
        worker.join();
    EXPECT_EQ(CountReaders().crashed, 1);
}

TEST_F(Readers, BothSidesOfAForkReadTheirOwnPixels) {
    Image const image(Write("a", "width 30\nheight 7\nbands 6\n"));
    auto const wrong = [&](int step) {
        int count = 0;
        for (int i = 0; i < 300; ++i) {
            int const channel = i * step % 6;
            std::vector<unsigned char> const samples = image.Read(channel);
            count += samples.size() == 210 && samples[0] == channel * 100 % 256 ? 0 : 1;
        }
        return std::min(count, 255);
    };
    ASSERT_EQ(wrong(1), 0);
    int const started = CountReaders().started;
    pid_t const child = test::InChild([&] { return wrong(5); });
    EXPECT_EQ(wrong(1), 0);
    EXPECT_EQ(test::StatusOf(child), 0);
    EXPECT_EQ(wrong(1), 0); // the child has ended without them
    EXPECT_EQ(CountReaders().started, started);
}

TEST_F(Readers, WarmOnesAreOneForListingsAndOneForPixels) {
    EndReaders();
    WarmReaders();
    EXPECT_EQ(CountReaders().alive, 2);
    EXPECT_TRUE(test::OpenedTree(Write("tree", "members 3\n")) && Image(Write("a", "")));
    EXPECT_EQ(CountReaders().alive, 2);
    EndReaders();
    UseOwnProcessDrivers();
    WarmReaders();
    EXPECT_EQ(CountReaders().alive, 0);
}

TEST_F(Readers, WithoutAProgramThereAreNoDriversAndNoStorm) {
    for (char const *program : {"/nowhere/zelvar-reader", "/bin/true"}) {
        EndReaders();
        BDIDrvrMngr::Instance()->Reset();
        RDIDriverMngr::Instance()->Reset();
        ReaderSettings settings;
        settings.program = program;
        UseReaderDrivers(settings);
        int const before = CountReaders().started;
        EXPECT_TRUE(BDIDrvrMngr::Instance()->Drivers().empty());
        EXPECT_FALSE(Image(Write("a", "")));
        WarmReaders();
        EXPECT_LE(CountReaders().started - before, 4);
    }
}

} // namespace
} // namespace zelvar
