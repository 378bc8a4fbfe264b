#include "zelvar/reader/RequestHandler.h"

#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/DIOPluginMngr.h"
#include "zelvar/data/FormatPlugin.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/reader/NodeMessage.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/data/wire/MessageChannel.h"
#include "zelvar/reader/FileStamp.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zelvar::reader {

namespace {

using Kind = wire::RequestBody;

constexpr int kChannelsTold = 4;               // with an image that is opened
constexpr std::size_t kMostNodes = 3'000'000;  // of one answer
constexpr std::size_t kBytesBesideTexts = 128; // of a node in a message, and more
constexpr char const *kIncomplete = "the request is not complete";
constexpr char const *kStopped = "stopped";

template <class Body>
RequestHandler::Answer Say(Body body) {
    RequestHandler::Answer answer;
    answer.Set(std::move(body));
    return answer;
}

/// The body of a request that is of this kind, if it is there.
template <class Body>
Body const *As(wire::RequestBodyUnion const &body) {
    return body.type == wire::RequestBodyUnionTraits<Body>::enum_value ? static_cast<Body const *>(body.value)
                                                                       : nullptr;
}

template <class Driver>
std::unique_ptr<wire::DriverFactsT> FactsOf(Driver const &driver) {
    auto facts = std::make_unique<wire::DriverFactsT>();
    facts->id = driver.GetId();
    facts->info = driver.GetInfo();
    facts->extensions = driver.GetExtensions();
    facts->family = driver.GetFamily();
    return facts;
}

std::unique_ptr<wire::FormatFactsT> ToWire(FormatFacts const &format) {
    auto facts = std::make_unique<wire::FormatFactsT>();
    facts->id = format.id;
    facts->name = format.name;
    facts->extensions = format.extensions;
    facts->reads = format.reads;
    facts->writes = format.writes;
    return facts;
}

/// A node that a driver made, given back to it.
struct CloseNode {
    BDIDrvr *driver = nullptr;
    void operator()(BDINode *node) const { driver->CloseNode(node); }
};
using OwnedNode = std::unique_ptr<BDINode, CloseNode>;

struct CloseWalk {
    BDIDrvr *driver = nullptr;
    void operator()(void *walk) const { driver->FindClose(walk); }
};

/// Whether a driver may be asked for these pixels at all: places are cast to int in many a driver.
bool IsSound(wire::ReadPixelsT const &asked) {
    constexpr double farthest = 2147483648.0;
    auto const isPlace = [](double at) { return std::abs(at) <= farthest; }; // a NaN is none
    auto const isSize = [](double size) { return size > 0 && size <= farthest; };
    return isPlace(asked.x) && isPlace(asked.y) && isSize(asked.width) && isSize(asked.height) && asked.outWidth > 0 &&
           asked.outHeight > 0 && asked.resampling >= RDIDriver::Nearest && asked.resampling <= RDIDriver::AsStored;
}

} // namespace

RequestHandler::Answer RequestHandler::Failure(DString reason) {
    wire::FailedT failed;
    failed.reason = std::move(reason);
    return Say(std::move(failed));
}

DString const *RequestHandler::FileOf(wire::RequestBodyUnion const &body) {
    auto const url = [](auto const *asked) { return asked != nullptr && asked->tree ? &asked->tree->url : nullptr; };
    auto const moniker = [](auto const *asked) {
        return asked != nullptr && asked->image ? &asked->image->moniker : nullptr;
    };
    auto const table = [](auto const *asked) {
        return asked != nullptr && asked->table ? &asked->table->moniker : nullptr;
    };
    auto const path = [](auto const *asked) { return asked == nullptr ? nullptr : &asked->path; };
    switch (body.type) {
    case Kind::ProbeTrees:
        return path(As<wire::ProbeTreesT>(body));
    case Kind::ProbeImage:
        return path(As<wire::ProbeImageT>(body));
    case Kind::StampFile:
        return path(As<wire::StampFileT>(body));
    case Kind::OpenTree:
        return url(As<wire::OpenTreeT>(body));
    case Kind::FindNode:
        return url(As<wire::FindNodeT>(body));
    case Kind::ListChildren:
        return url(As<wire::ListChildrenT>(body));
    case Kind::OpenImage:
        return moniker(As<wire::OpenImageT>(body));
    case Kind::DescribeChannel:
        return moniker(As<wire::DescribeChannelT>(body));
    case Kind::GetAttribute:
        return moniker(As<wire::GetAttributeT>(body));
    case Kind::ReadPixels:
        return moniker(As<wire::ReadPixelsT>(body));
    case Kind::OpenTable:
        return table(As<wire::OpenTableT>(body));
    case Kind::ReadRows:
        return table(As<wire::ReadRowsT>(body));
    default:
        return nullptr;
    }
}

std::optional<RequestHandler::Answer> RequestHandler::Handle(wire::RequestBodyUnion const &body,
                                                             std::unique_ptr<FileDescriptor> file) {
    if (body.value == nullptr)
        return Failure(kIncomplete);
    if (file != nullptr && body.type == Kind::ReadPixels) // in place of the former memory, even if it is none
        m_pixels = wire::SharedMemory::Map(file->Release());
    switch (body.type) {
    case Kind::ListDrivers:
        return ListDrivers();
    case Kind::ProbeTrees:
        return ProbeTrees(*As<wire::ProbeTreesT>(body));
    case Kind::ProbeFiles:
        return ProbeFiles(*As<wire::ProbeFilesT>(body));
    case Kind::ProbeImage:
        return ProbeImage(*As<wire::ProbeImageT>(body));
    case Kind::FindOwned:
        return FindOwned(*As<wire::FindOwnedT>(body));
    case Kind::StampFile:
        return StampFile(*As<wire::StampFileT>(body));
    case Kind::OpenTree:
        return OpenTree(*As<wire::OpenTreeT>(body));
    case Kind::FindNode:
        return FindNode(*As<wire::FindNodeT>(body));
    case Kind::ListChildren:
        return ListChildren(*As<wire::ListChildrenT>(body));
    case Kind::CloseTree:
        m_trees.Close(As<wire::CloseTreeT>(body)->id);
        return std::nullopt;
    case Kind::OpenImage:
        return OpenImage(*As<wire::OpenImageT>(body));
    case Kind::DescribeChannel:
        return DescribeChannel(*As<wire::DescribeChannelT>(body));
    case Kind::GetAttribute:
        return GetAttribute(*As<wire::GetAttributeT>(body));
    case Kind::ReadPixels:
        return ReadPixels(*As<wire::ReadPixelsT>(body));
    case Kind::CloseImage:
        m_images.Close(As<wire::CloseImageT>(body)->id);
        return std::nullopt;
    case Kind::OpenTable:
        return OpenTable(*As<wire::OpenTableT>(body));
    case Kind::ReadRows:
        return ReadRows(*As<wire::ReadRowsT>(body));
    case Kind::CloseTable:
        m_tables.Close(As<wire::CloseTableT>(body)->id);
        return std::nullopt;
    default:
        return Failure("a request of an unknown kind");
    }
}

RequestHandler::Answer RequestHandler::ListDrivers() {
    wire::DriversT drivers;
    for (BDIDrvr const *driver : BDIDrvrMngr::Instance()->Drivers()) {
        drivers.trees.push_back(FactsOf(*driver));
        drivers.trees.back()->multipleImages = driver->GetAttrInt("BDI_Multiple_Images");
        drivers.trees.back()->filtering = driver->GetAttrInt("BDI_Filtering");
    }
    for (RDIDriver const *driver : RDIDriverMngr::Instance()->Drivers())
        drivers.rasters.push_back(FactsOf(*driver));
    for (ADIDriver const *driver : ADIDriverMngr::Instance()->Drivers())
        drivers.tables.push_back(FactsOf(*driver));
    for (DIOPlugin const *plugin : DIOPluginMngr::Instance()->Plugins())
        if (auto const *const format = dynamic_cast<FormatPlugin const *>(plugin))
            drivers.formats.push_back(ToWire(format->Facts()));
    return Say(std::move(drivers));
}

std::optional<wire::ProbedT> RequestHandler::Probe(DString const &path, std::vector<DString> const &drivers) const {
    wire::ProbedT probed;
    for (DString const &id : drivers) {
        if (IsStopped())
            return std::nullopt;
        BDIDrvr const *const driver = BDIDrvrMngr::Instance()->GetDrvr(id.c_str());
        if (driver != nullptr && driver->CanReadPath(path))
            probed.drivers.push_back(id);
    }
    return probed;
}

RequestHandler::Answer RequestHandler::ProbeTrees(wire::ProbeTreesT const &asked) {
    std::optional<wire::ProbedT> probed = Probe(asked.path, asked.drivers);
    return probed ? Say(std::move(*probed)) : Failure(kStopped);
}

RequestHandler::Answer RequestHandler::ProbeFiles(wire::ProbeFilesT const &asked) {
    wire::FilesProbedT answer;
    for (std::unique_ptr<wire::ProbedFileT> const &file : asked.files) {
        if (file == nullptr || file->set >= asked.sets.size() || asked.sets[file->set] == nullptr)
            return Failure("a file without its drivers");
        std::optional<wire::ProbedT> probed = Probe(file->path, asked.sets[file->set]->drivers);
        if (!probed)
            break; // what is known is of use
        answer.files.push_back(std::make_unique<wire::ProbedT>(std::move(*probed)));
    }
    return Say(std::move(answer));
}

RequestHandler::Answer RequestHandler::ProbeImage(wire::ProbeImageT const &asked) {
    RDIDriver const *const driver = RDIDriverMngr::Instance()->GetDriver(asked.driver.c_str());
    if (driver == nullptr)
        return Failure("no raster driver " + asked.driver);
    wire::ProbedT probed;
    if (driver->IsMyFile(asked.path.c_str()) == 1)
        probed.drivers.push_back(asked.driver);
    return Say(std::move(probed));
}

RequestHandler::Answer RequestHandler::FindOwned(wire::FindOwnedT const &asked) const {
    RDIDriver const *const driver = RDIDriverMngr::Instance()->GetDriver(asked.driver.c_str());
    if (driver == nullptr)
        return Failure("no raster driver " + asked.driver);
    wire::OwnedFoundT found;
    for (found.index = -1; found.index < 0 && found.looked < asked.paths.size() && !IsStopped(); ++found.looked)
        if (driver->IsMyFile(asked.paths[found.looked].c_str()) == 1)
            found.index = static_cast<std::int32_t>(found.looked);
    return Say(found);
}

RequestHandler::Answer RequestHandler::StampFile(wire::StampFileT const &asked) {
    FileStamp const found = StampOf(asked.path);
    wire::StampT stamp;
    stamp.isThere = found.IsThere();
    stamp.modified = found.modified;
    stamp.size = found.size;
    return Say(stamp);
}

OpenTrees::Tree *RequestHandler::TreeOf(std::unique_ptr<wire::TreeSpecT> const &spec, DString &reason) {
    reason = kIncomplete;
    return spec == nullptr ? nullptr : m_trees.Find(*spec, reason);
}

OpenImages::Image *RequestHandler::ImageOf(std::unique_ptr<wire::ImageSpecT> const &spec, DString &reason) {
    reason = kIncomplete;
    return spec == nullptr ? nullptr : m_images.Find(*spec, reason);
}

OpenTables::Table *RequestHandler::TableOf(std::unique_ptr<wire::TableSpecT> const &spec, DString &reason) {
    reason = kIncomplete;
    return spec == nullptr ? nullptr : m_tables.Find(*spec, reason);
}

RequestHandler::Answer RequestHandler::OpenTree(wire::OpenTreeT const &asked) {
    DString reason;
    OpenTrees::Tree const *const tree = TreeOf(asked.tree, reason);
    if (tree == nullptr)
        return Failure(std::move(reason));
    wire::TreeOpenedT opened;
    opened.driver = tree->driver->GetId();
    if (tree->root != nullptr)
        opened.root = ToWire(*tree->root);
    return Say(std::move(opened));
}

RequestHandler::Answer RequestHandler::FindNode(wire::FindNodeT const &asked) {
    DString reason;
    OpenTrees::Tree const *const tree = TreeOf(asked.tree, reason);
    if (tree == nullptr)
        return Failure(std::move(reason));
    OwnedNode const node(tree->driver->OpenNode(tree->repository, asked.path.c_str()), CloseNode{tree->driver});
    if (node == nullptr)
        return Failure("no node " + asked.path);
    wire::NodeFoundT found;
    found.node = ToWire(*node);
    return Say(std::move(found));
}

RequestHandler::Answer RequestHandler::ListChildren(wire::ListChildrenT const &asked) {
    DString reason;
    OpenTrees::Tree *const tree = TreeOf(asked.tree, reason);
    if (tree == nullptr)
        return Failure(std::move(reason));
    if (asked.parent == nullptr)
        return Failure(kIncomplete);
    if (tree->root != nullptr && asked.parent->path == tree->root->path)
        return WalkChildren(*tree, *tree->root, asked.mask);
    OwnedNode const parent(tree->driver->OpenNode(tree->repository, asked.parent->path.c_str()),
                           CloseNode{tree->driver});
    return parent == nullptr ? Failure("no node " + asked.parent->path) : WalkChildren(*tree, *parent, asked.mask);
}

RequestHandler::Answer RequestHandler::WalkChildren(OpenTrees::Tree &tree, BDINode const &parent, int mask) {
    wire::ChildrenT children;
    std::unique_ptr<void, CloseWalk> const walk(tree.driver->FindFirstChildNode(tree.repository, &parent, mask),
                                                CloseWalk{tree.driver});
    std::size_t bytes = 0;
    while (walk != nullptr) {
        BDINode const *const child = tree.driver->FindNextChildNode(walk.get());
        if (child == nullptr)
            break;
        bytes += child->path.size() + child->name.size() + child->value.size() + kBytesBesideTexts;
        if (bytes > wire::MessageChannel::kLongest || children.nodes.size() == kMostNodes)
            return Failure("more nodes than fit into one answer");
        if (IsStopped())
            return Failure(kStopped);
        children.nodes.push_back(ToWire(*child));
    }
    return Say(std::move(children));
}

RequestHandler::Answer RequestHandler::OpenImage(wire::OpenImageT const &asked) {
    DString reason;
    OpenImages::Image const *const image = ImageOf(asked.image, reason);
    if (image == nullptr)
        return Failure(std::move(reason));
    wire::ImageOpenedT opened;
    opened.driver = image->driver->GetId();
    opened.numChannels = std::max(0, image->driver->GetNumChnl(image->handle));
    for (int channel = 0; channel < std::min(kChannelsTold, opened.numChannels); ++channel)
        opened.channels.push_back(image->Describe(channel));
    opened.info = image->driver->GetAttrString("RDI_Drvr_Info", image->handle, 0);
    if (opened.numChannels > 0) {
        opened.pyramid = image->driver->GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", image->handle, 0);
        opened.palette = image->driver->GetAttrInt("RDI_Drvr_Palette", image->handle, 0);
    }
    return Say(std::move(opened));
}

RequestHandler::Answer RequestHandler::DescribeChannel(wire::DescribeChannelT const &asked) {
    DString reason;
    OpenImages::Image const *const image = ImageOf(asked.image, reason);
    if (image == nullptr)
        return Failure(std::move(reason));
    if (!image->HasChannel(asked.channel))
        return Failure("no such channel");
    wire::ChannelDescribedT described;
    described.channel = image->Describe(asked.channel);
    return Say(std::move(described));
}

RequestHandler::Answer RequestHandler::GetAttribute(wire::GetAttributeT const &asked) {
    DString reason;
    OpenImages::Image const *const image = ImageOf(asked.image, reason);
    if (image == nullptr)
        return Failure(std::move(reason));
    if (!image->HasChannel(asked.channel))
        return Failure("no such channel");
    wire::AttributeT attribute;
    if (asked.isText)
        attribute.text = image->driver->GetAttrString(asked.name.c_str(), image->handle, asked.channel);
    else
        attribute.number = image->driver->GetAttrInt(asked.name.c_str(), image->handle, asked.channel);
    return Say(std::move(attribute));
}

RequestHandler::Answer RequestHandler::ReadPixels(wire::ReadPixelsT const &asked) {
    DString reason;
    OpenImages::Image const *const image = ImageOf(asked.image, reason);
    if (image == nullptr)
        return Failure(std::move(reason));
    int const channel = asked.palette ? 0 : asked.channel;
    if (!image->HasChannel(channel) || !IsSound(asked))
        return Failure("no such pixels");
    constexpr int bytesOfColor = 3;
    int const bytesEach =
        asked.palette ? bytesOfColor : RDIGetDTSize(image->driver->GetChnlDataType(image->handle, channel));
    auto const wanted = static_cast<std::uint64_t>(asked.outWidth) * static_cast<std::uint64_t>(asked.outHeight) *
                        static_cast<std::uint64_t>(bytesEach);
    if (bytesEach == 0 || m_pixels == nullptr || wanted > asked.bytes || wanted > m_pixels->Size())
        return Failure("no memory for the pixels");
    bool const isRead =
        asked.palette ? image->driver->ReadPaletteRsmpl(image->handle, asked.x, asked.y, asked.width, asked.height,
                                                        m_pixels->Data(), asked.outWidth, asked.outHeight)
                      : image->driver->ReadBlockRsmpl(image->handle, channel, asked.x, asked.y, asked.width,
                                                      asked.height, m_pixels->Data(), asked.outWidth, asked.outHeight,
                                                      asked.resampling, asked.usePyramid, asked.clip);
    return isRead ? Say(wire::PixelsReadT{}) : Failure(IsStopped() ? kStopped : "the pixels cannot be read");
}

RequestHandler::Answer RequestHandler::OpenTable(wire::OpenTableT const &asked) {
    DString reason;
    OpenTables::Table const *const table = TableOf(asked.table, reason);
    if (table == nullptr)
        return Failure(std::move(reason));
    wire::TableOpenedT opened;
    opened.driver = table->driver->GetId();
    opened.encoding = table->driver->GetEncoding(table->handle);
    for (ADIColumn const &column : table->driver->GetColumns(table->handle)) {
        opened.columns.push_back(std::make_unique<wire::TableColumnT>());
        opened.columns.back()->name = column.name;
        opened.columns.back()->type = column.type;
    }
    return Say(std::move(opened));
}

RequestHandler::Answer RequestHandler::ReadRows(wire::ReadRowsT const &asked) {
    DString reason;
    OpenTables::Table const *const table = TableOf(asked.table, reason);
    if (table == nullptr)
        return Failure(std::move(reason));
    if (asked.first < 0 || asked.most < 1)
        return Failure("no such rows");
    ADIRows rows;
    if (!table->driver->ReadRows(table->handle, asked.first, asked.most, rows))
        return Failure(IsStopped() ? kStopped : "the rows cannot be read");
    wire::RowsReadT read;
    read.count = rows.count;
    read.isEnd = rows.isEnd;
    read.texts = std::move(rows.texts);
    read.ends = std::move(rows.ends);
    return Say(std::move(read));
}

} // namespace zelvar::reader
