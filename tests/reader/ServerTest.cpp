#include "zelvar/reader/Server.h"

#include "support/ReaderTalk.h"
#include "support/ScriptedDriver.h"
#include "zelvar/data/wire/ReaderStatus.h"

#include <new>
#include <stdexcept>

#include <fcntl.h>

namespace zelvar::test {
namespace {

using Result = wire::MessageChannel::Result;

/// A reader's server in this process, with drivers written down by the test.
struct ReaderServer : testing::Test {
    ReaderServer() {
        auto status = wire::SharedMemory::Create(sizeof(wire::ReaderStatus));
        page = wire::SharedMemory::Map(dup(status->File()));
        server.emplace(pair.ends[1], std::move(status), log);
        receiver = std::thread([this] { ended = server->Receive(); });
    }
    /// The application closes its end.
    ~ReaderServer() override {
        shutdown(talk.Socket(), SHUT_WR);
        tree.openGate.Open();
        if (receiver.joinable())
            receiver.join();
        server.reset();
        EXPECT_EQ(tree.closes, tree.opens);
        EXPECT_EQ(tree.nodesClosed, tree.nodesMade);
        EXPECT_EQ(tree.findsClosed, tree.finds);
        EXPECT_EQ(raster.closes, raster.opens);
    }
    [[nodiscard]] wire::ReaderStatus const &Status() const {
        return *static_cast<wire::ReaderStatus const *>(page->Data());
    }

    /// The names of the children in the tree "/a"; the reason where there are none.
    std::vector<DString> Children(DString const &parent, int mask = 0xFF, std::uint64_t id = 7,
                                  DString const &filter = {}) {
        auto const answer = talk.Ask(ListChildren(TreeSpec(id, "TREE", "/a", false, filter), parent, mask));
        if (answer == nullptr || answer->body.AsChildren() == nullptr)
            return {FailureIn(answer)};
        std::vector<DString> names;
        for (auto const &node : answer->body.AsChildren()->nodes)
            names.push_back(node->name);
        return names;
    }
    template <class Body>
    std::string FailureOf(Body body, int file = -1) {
        return FailureIn(talk.Ask(std::move(body), file));
    }

    ScriptedDrivers drivers;
    ScriptedTreeDriver &tree = ScriptedDrivers::AddTree("TREE", "*.tree");
    ScriptedTreeDriver &other = ScriptedDrivers::AddTree("OTHER", "*.other");
    ScriptedRasterDriver &raster = ScriptedDrivers::AddRaster("RASTER");
    SocketPair pair;
    ReaderTalk talk{pair.ends[0]};
    reader::LogCollector log;
    std::unique_ptr<wire::SharedMemory> page;
    std::optional<reader::Server> server;
    std::thread receiver;
    Result ended = Result::Done;
};

TEST_F(ReaderServer, TellsTheDriversInTheirOrder) {
    tree.attributes["BDI_Filtering"] = 1;
    auto const answer = talk.Ask(wire::ListDriversT{});
    ASSERT_NE(answer, nullptr);
    wire::DriversT const *const told = answer->body.AsDrivers();
    ASSERT_NE(told, nullptr);
    std::string text;
    for (auto const &driver : told->trees)
        text +=
            driver->id + driver->extensions + Format(" %d %d, ", int{driver->multipleImages}, int{driver->filtering});
    EXPECT_EQ(text, "TREE*.tree 1 1, OTHER*.other 1 0, ");
    ASSERT_EQ(told->rasters.size(), 1U);
    EXPECT_EQ(told->rasters[0]->id + ": " + told->rasters[0]->info, "RASTER: scripted RASTER");
}

TEST_F(ReaderServer, ProbesWithTheDriversAskedForInTheirOrder) {
    tree.SetTree("/a", {});
    other.SetTree("/a", {});
    raster.SetImage("/a", {});
    using Ids = std::vector<DString>;
    for (auto const &[path, asked, told] :
         Rows<DString, Ids, Ids>{{"/a", {"OTHER", "UNKNOWN", "TREE"}, {"OTHER", "TREE"}},
                                 {"/a", {"TREE"}, {"TREE"}},
                                 {"/b", {"TREE", "OTHER"}, {}}}) {
        wire::ProbeTreesT probe;
        probe.path = path;
        probe.drivers = asked;
        EXPECT_EQ(talk.Ask(probe)->body.AsProbed()->drivers, told);
    }
    wire::ProbeImageT probe;
    probe.driver = "RASTER";
    for (auto const &[path, told] : Rows<DString, Ids>{{"/a", {"RASTER"}}, {"/b", {}}}) {
        probe.path = path;
        EXPECT_EQ(talk.Ask(probe)->body.AsProbed()->drivers, told);
    }
    probe.driver = "UNKNOWN";
    EXPECT_EQ(FailureOf(probe), "no raster driver UNKNOWN");
}

TEST_F(ReaderServer, StampsAFileAlsoBehindAMoniker) {
    TempFolder const folder;
    DString const path = folder.Write("a.tif", "12345");
    wire::StampFileT request;
    for (DString const &name : {path, path + "?band=1", path + "/inner"}) {
        SCOPED_TRACE(name);
        request.path = name;
        auto const answer = talk.Ask(request);
        wire::StampT const *const stamp = answer->body.AsStamp();
        ASSERT_TRUE(stamp != nullptr && stamp->isThere);
        EXPECT_EQ(stamp->size, 5);
        EXPECT_GT(stamp->modified, std::int64_t{1'500'000'000} * 1'000'000'000);
        EXPECT_EQ(Status().modified, stamp->modified);
    }
    request.path = folder / "gone";
    EXPECT_FALSE(talk.Ask(request)->body.AsStamp()->isThere);
    EXPECT_EQ(Status().number, 4U);
    EXPECT_TRUE(Status().modified == 0 && Status().size == -1);
}

TEST_F(ReaderServer, ATreeIsOpenedListedAndClosed) {
    tree.SetTree("/a", {.name = "root",
                        .children = {{.name = "one", .children = {{.name = "leaf"}}},
                                     {.name = "two", .type = BDINode_Raster, .value = "v"}}});
    auto const opened = talk.Ask(OpenTree(TreeSpec(7, "TREE", "/a")));
    ASSERT_NE(opened->body.AsTreeOpened(), nullptr) << FailureIn(opened);
    EXPECT_EQ(opened->body.AsTreeOpened()->driver, "TREE");
    EXPECT_EQ(opened->body.AsTreeOpened()->root->path + opened->body.AsTreeOpened()->root->name, "/aroot");

    EXPECT_THAT(Children("/a"), ElementsAre("one", "two"));
    EXPECT_THAT(Children("/a", BDINode_Raster), ElementsAre("two"));
    EXPECT_THAT(Children("/a/one"), ElementsAre("leaf"));
    EXPECT_THAT(Children("/a/two"), IsEmpty());
    EXPECT_THAT(Children("/a/gone"), ElementsAre("no node /a/gone"));

    wire::FindNodeT find;
    find.tree = TreeSpec(7, "TREE", "/a");
    find.path = "/a/two";
    auto const found = talk.Ask(std::move(find));
    ASSERT_NE(found->body.AsNodeFound(), nullptr) << FailureIn(found);
    EXPECT_EQ(found->body.AsNodeFound()->node->value, "v");
    EXPECT_EQ(found->body.AsNodeFound()->node->type, BDINode_Raster);
    EXPECT_EQ(tree.opens, 1);

    wire::CloseTreeT close;
    close.id = 7;
    talk.Send(close);
    // Nothing answers it: the next answer is the next request's.
    EXPECT_THAT(Children("/a"), ElementsAre("one", "two"));
    EXPECT_EQ(tree.opens, 2) << "what is not open is opened by what the request says";
    EXPECT_EQ(tree.closes, 1);
}

TEST_F(ReaderServer, ATreeMayBeFiltered) {
    tree.SetTree("/a", {.children = {{.name = "all"}}});
    tree.SetFilteredTree("some", {.children = {{.name = "few"}}});
    EXPECT_THAT(Children("/a", 0xFF, 1, "some"), ElementsAre("few"));
    EXPECT_THAT(Children("/a", 0xFF, 2), ElementsAre("all"));
}

TEST_F(ReaderServer, OfManyTreesTheOneNotUsedForLongestIsClosed) {
    tree.SetTree("/a", {});
    auto const open = [this](std::uint64_t id) {
        ASSERT_EQ(FailureOf(OpenTree(TreeSpec(id, "TREE", "/a"))), "not failed");
    };
    for (std::uint64_t id = 1; id <= 64; ++id)
        open(id);
    // The first is used again and kept, the second is not.
    for (auto const &[id, opens, closes] :
         Rows<std::uint64_t, int, int>{{1, 64, 0}, {65, 65, 1}, {1, 65, 1}, {2, 66, 2}}) {
        open(id);
        EXPECT_EQ(tree.opens, opens) << id;
        EXPECT_EQ(tree.closes, closes) << id;
    }
}

/// One of a family: opens in the name of the others.
class Spokesman : public ScriptedRasterDriver {
public:
    Spokesman(DString id, RDIDriver &member) : ScriptedRasterDriver(std::move(id)), m_member(&member) {}
    void *OpenFileInFamily(BDIMoniker const &moniker, RDIDriver **opener, StopSignal const *stop,
                           DError *error) override {
        *opener = m_member;
        return m_member->OpenFile(moniker, stop, error);
    }

private:
    RDIDriver *m_member;
};

TEST_F(ReaderServer, AnImageTellsItsFirstChannelsAndWhoOpenedIt) {
    raster.SetImage(
        "/a",
        {.width = 30, .height = 20, .channels = 6, .type = RDI_Int16, .geo = {2, 5}, .info = "six", .pyramid = true});
    RDIDriverMngr::Instance()->Add(std::make_unique<Spokesman>("FAMILY", raster));
    auto const answer = talk.Ask(OpenImage(ImageSpec(1, "FAMILY", "/a", true)));
    wire::ImageOpenedT const *const opened = answer->body.AsImageOpened();
    ASSERT_NE(opened, nullptr) << FailureIn(answer);
    EXPECT_EQ(opened->driver, "RASTER");
    EXPECT_EQ(opened->numChannels, 6);
    ASSERT_EQ(opened->channels.size(), 4U);
    wire::ChannelT const &last = *opened->channels[3];
    EXPECT_EQ((std::vector<int>{last.sizeX, last.sizeY, last.dataType, last.slices, last.timeFrames}),
              (std::vector<int>{30, 20, RDI_Int16, 2, 5}));
    EXPECT_EQ(opened->info, "six");
    EXPECT_TRUE(opened->pyramid == 1 && opened->palette == 0);
    EXPECT_EQ(FailureOf(OpenImage(ImageSpec(2, "FAMILY", "/a"))), "no such scripted image")
        << "without its family the driver stands alone";

    wire::DescribeChannelT describe;
    describe.image = ImageSpec(1, "FAMILY", "/a", true);
    describe.channel = 5;
    EXPECT_EQ(talk.Ask(describe)->body.AsChannelDescribed()->channel->sizeX, 30);
    for (int const channel : {-1, 6, std::numeric_limits<int>::max()}) {
        describe.channel = channel;
        EXPECT_EQ(FailureOf(describe), "no such channel") << channel;
    }
    wire::GetAttributeT attribute;
    attribute.image = ImageSpec(1, "FAMILY", "/a", true);
    attribute.name = "RDI_Drvr_Info";
    attribute.isText = true;
    EXPECT_EQ(talk.Ask(attribute)->body.AsAttribute()->text, "six");
    attribute.name = "RDI_Drvr_Sppt_Intrnl_RslPrmd";
    attribute.isText = false;
    EXPECT_EQ(talk.Ask(attribute)->body.AsAttribute()->number, 1);
    EXPECT_EQ(raster.opens, 1);

    wire::CloseImageT close;
    close.id = 1;
    talk.Send(close);
    describe.channel = 0;
    EXPECT_NE(talk.Ask(describe)->body.AsChannelDescribed(), nullptr);
    EXPECT_EQ(raster.opens, 2);
}

TEST_F(ReaderServer, PixelsGoIntoTheMemoryThatCameLast) {
    raster.SetImage("/a", {.type = RDI_UInt16, .sample = [](int, int x, int y) { return 100 * y + x; }});
    auto const memory = wire::SharedMemory::Create(64);
    auto const next = wire::SharedMemory::Create(64);
    auto const sampleIn = [](wire::SharedMemory const &from) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, static_cast<char const *>(from.Data()) + 30, sizeof sample);
        return sample;
    };
    auto const read = [this](int file) { return FailureOf(ReadPixels(ImageSpec(1, "RASTER", "/a"), 32), file); };
    EXPECT_EQ(read(-1), "no memory for the pixels");
    for (wire::SharedMemory const *given : {memory.get(), next.get()}) {
        EXPECT_EQ(read(given->File()), "not failed");
        EXPECT_EQ(sampleIn(*given), 303);
    }
    std::memset(next->Data(), 0, next->Size());
    EXPECT_EQ(read(-1), "not failed");
    EXPECT_EQ(sampleIn(*next), 303) << "it stays until another comes";
    int const unsealed = open("/dev/null", O_RDWR | O_CLOEXEC);
    EXPECT_EQ(read(unsealed), "no memory for the pixels");
    close(unsealed);
    auto request = ReadPixels(ImageSpec(1, "RASTER", "/a"), 32);
    request.resampling = 2;
    for (bool const clips : {false, true}) {
        request.clip = clips;
        request.usePyramid = !clips;
        EXPECT_EQ(FailureOf(request, memory->File()), "not failed");
        EXPECT_EQ(raster.how, (std::tuple(2, !clips, clips)));
    }
}

TEST_F(ReaderServer, PixelsThroughAPaletteAreThreeBytesEach) {
    raster.SetImage("/a", {.palette = true});
    auto const memory = wire::SharedMemory::Create(48);
    auto request = ReadPixels(ImageSpec(1, "RASTER", "/a"), 48);
    request.palette = true;
    EXPECT_EQ(FailureOf(request, memory->File()), "not failed");
    EXPECT_EQ(static_cast<unsigned char const *>(memory->Data())[46], 100);
    request.bytes = 47;
    EXPECT_EQ(FailureOf(request), "no memory for the pixels");
}

TEST_F(ReaderServer, AbsurdPixelsAreRefusedBeforeTheDriverIsAsked) {
    raster.SetImage("/a", {.type = RDI_Float32});
    raster.SetImage("/strange", {.type = 77});
    auto const memory = wire::SharedMemory::Create(64);
    ASSERT_EQ(FailureOf(ReadPixels(ImageSpec(1, "RASTER", "/a"), 64), memory->File()), "not failed");
    constexpr int most = std::numeric_limits<int>::max();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    using Change = void (*)(wire::ReadPixelsT &);
    Rows<char const *, Change> const cases = {
        {"more than the message says", [](auto &r) { r.bytes = 63; }},
        {"more than the memory has", [](auto &r) { r.bytes = most, r.outWidth = 5; }},
        {"sizes whose product is nearly 2^64", [](auto &r) { r.bytes = ~0ULL, r.outWidth = most, r.outHeight = most; }},
        {"a product that is 0 in 32 bits", [](auto &r) { r.bytes = ~0ULL, r.outWidth = r.outHeight = 1 << 16; }},
        {"no width", [](auto &r) { r.outWidth = 0; }},
        {"no height", [](auto &r) { r.outHeight = 0; }},
        {"both below zero", [](auto &r) { r.outWidth = -2, r.outHeight = -2; }},
        {"no window", [](auto &r) { r.width = 0; }},
        {"a window below zero", [](auto &r) { r.height = -1; }},
        {"a window at no place", [](auto &r) { r.x = std::nan(""); }},
        {"a window at infinity", [](auto &r) { r.y = -infinite; }},
        {"a window farther than channels reach", [](auto &r) { r.x = -3e9; }},
        {"a window larger than channels are", [](auto &r) { r.height = 3e9; }},
        {"an infinite window", [](auto &r) { r.width = infinite; }},
        {"a channel below zero", [](auto &r) { r.channel = -1; }},
        {"a channel too many", [](auto &r) { r.channel = 1; }},
        {"an unknown method", [](auto &r) { r.resampling = RDIDriver::AsStored + 1; }},
        {"a method below zero", [](auto &r) { r.resampling = -1; }},
        {"samples of an unknown type", [](auto &r) { r.image = ImageSpec(2, "RASTER", "/strange"); }},
        {"no image", [](auto &r) { r.image = nullptr; }}};
    for (auto const &[what, change] : cases) {
        auto request = ReadPixels(ImageSpec(1, "RASTER", "/a"), 64);
        change(request);
        EXPECT_NE(FailureOf(std::move(request)), "not failed") << what;
    }
    EXPECT_EQ(raster.reads, 1);
}

TEST_F(ReaderServer, WhatIsMissingOrUnknownFails) {
    tree.SetTree("/a", {});
    wire::ListChildrenT orphan;
    orphan.tree = TreeSpec(1, "TREE", "/a");
    EXPECT_THAT((std::vector{FailureOf(wire::OpenTreeT{}), FailureOf(wire::FindNodeT{}),
                             FailureOf(wire::ListChildrenT{}), FailureOf(orphan), FailureOf(wire::OpenImageT{}),
                             FailureOf(wire::DescribeChannelT{}), FailureOf(wire::GetAttributeT{})}),
                testing::Each("the request is not complete"));
    wire::ProbeFilesT files;
    files.files.push_back(std::make_unique<wire::ProbedFileT>()); // of a set that is not there
    EXPECT_EQ(FailureOf(std::move(files)), "a file without its drivers");
    EXPECT_EQ(FailureOf(OpenTree(TreeSpec(2, "NOBODY", "/a"))), "no tree driver NOBODY");
    EXPECT_EQ(FailureOf(OpenTree(TreeSpec(2, "TREE", "/b"))), "TREE does not open /b");
    EXPECT_EQ(FailureOf(OpenImage(ImageSpec(2, "", "/a"))), "no raster driver ");
    EXPECT_EQ(FailureOf(OpenImage(ImageSpec(2, "RASTER", "/b"))), "no such scripted image");

    wire::RequestT empty;
    empty.number = 99;
    talk.SendBytes(wire::Pack(empty));
    auto const answer = talk.Receive();
    EXPECT_EQ(FailureIn(answer), "the request is not complete");
    EXPECT_EQ(answer->number, 99U);
}

TEST_F(ReaderServer, ABodyOfAnUnknownKindFailsAndBytesThatAreNoRequestEndIt) {
    flatbuffers::FlatBufferBuilder builder;
    auto const body = wire::CreateListDrivers(builder).Union();
    builder.Finish(wire::CreateRequest(builder, 5, 0, static_cast<wire::RequestBody>(200), body));
    talk.SendBytes({builder.GetBufferPointer(), builder.GetBufferPointer() + builder.GetSize()});
    EXPECT_EQ(FailureIn(talk.Receive()), "the request is not complete");
    EXPECT_NE(talk.Ask(wire::ListDriversT{})->body.AsDrivers(), nullptr) << "the reader goes on";
    talk.SendBytes({1, 2, 3, 4, 5, 6, 7, 8});
    receiver.join();
    EXPECT_EQ(ended, Result::Damaged);
}

TEST_F(ReaderServer, TheEndOfTheTalkEndsItWhateverADriverWaitsFor) {
    tree.SetTree("/a", {});
    tree.openGate.Close();
    talk.Send(OpenTree(TreeSpec(1, "TREE", "/a")));
    tree.openGate.AwaitCaller();
    shutdown(talk.Socket(), SHUT_WR);
    receiver.join(); // while the driver still stands at its gate
    EXPECT_EQ(ended, Result::Gone);
}

TEST_F(ReaderServer, AStoppedReadFailsAndTheNextIsNotStopped) {
    raster.SetImage("/a", {});
    auto const memory = wire::SharedMemory::Create(64);
    raster.readGate.Close();
    std::uint64_t const number = talk.Send(ReadPixels(ImageSpec(1, "RASTER", "/a"), 64), memory->File());
    raster.readGate.AwaitCaller();
    talk.Stop(number + 100); // nobody's
    talk.Stop(number);
    auto const answer = talk.Receive();
    EXPECT_EQ(FailureIn(answer), "stopped");
    EXPECT_EQ(answer->number, number);
    talk.Stop(number); // past
    raster.readGate.Open();
    EXPECT_EQ(FailureOf(ReadPixels(ImageSpec(1, "RASTER", "/a"), 64)), "not failed");
}

TEST_F(ReaderServer, ARequestStoppedBeforeItsTurnIsAnsweredWithoutBeingDone) {
    tree.SetTree("/a", {});
    tree.openGate.Close();
    std::uint64_t const first = talk.Send(OpenTree(TreeSpec(1, "TREE", "/a")));
    tree.openGate.AwaitCaller();
    std::uint64_t const second = talk.Send(OpenTree(TreeSpec(2, "TREE", "/a")));
    talk.Stop(second);
    std::uint64_t const third = talk.Send(wire::ListDriversT{});
    // A message that is larger than the socket holds has been taken in when it is sent: so has what came before.
    wire::StampFileT large;
    large.path.assign(8'000'000, 'x');
    std::uint64_t const last = talk.Send(large);
    tree.openGate.Open();
    for (std::uint64_t const number : {first, second, third, last}) {
        auto const answer = talk.Receive();
        EXPECT_EQ(answer->number, number);
        EXPECT_EQ(FailureIn(answer) == "stopped", number == second);
    }
    EXPECT_EQ(tree.opens, 1);
}

/// Throws what a test wants.
struct ThrowingTree : ScriptedTreeDriver {
    using ScriptedTreeDriver::ScriptedTreeDriver;
    [[nodiscard]] bool CanReadPath(DString const &path) const override {
        if (path == "memory")
            throw std::bad_alloc();
        if (path == "error")
            throw std::runtime_error("because");
        throw 7;
    }
};

TEST_F(ReaderServer, WhatADriverThrowsIsAFailureWithItsReason) {
    BDIDrvrMngr::Instance()->Add(std::make_unique<ThrowingTree>("THROWS"));
    wire::ProbeTreesT probe;
    probe.drivers = {"THROWS"};
    for (auto const &[path, reason] : Rows<char const *, char const *>{
             {"memory", "out of memory"}, {"error", "because"}, {"anything", "a driver failed"}}) {
        probe.path = path;
        EXPECT_EQ(FailureOf(probe), reason);
    }
}

TEST_F(ReaderServer, WhatIsTracedGoesWithTheAnswer) {
    for (int i = 0; i < 120; ++i)
        Report::TraceMessage(Report::kTraceDriver, "line %d %s", i, DString(5000, 'x').c_str());
    auto const answer = talk.Ask(wire::ListDriversT{});
    ASSERT_EQ(answer->log.size(), 100U);
    wire::LogLineT const &last = *answer->log.back();
    EXPECT_EQ(last.level, Report::kTraceDriver);
    EXPECT_THAT(last.text, testing::AllOf(testing::SizeIs(2048), HasSubstr("line 99 ")));
    EXPECT_EQ(talk.Ask(wire::ListDriversT{})->log.size(), 0U);
}

} // namespace
} // namespace zelvar::test
