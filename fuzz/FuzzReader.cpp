// Neither end of the talk between an application and its readers trusts the other's bytes: whatever comes is unpacked
// or refused, and what a reader's drivers are asked for stays within bounds.
#include "support/ScriptedDriver.h"
#include "support/ScriptedTable.h"
#include "zelvar/data/reader/AnswerReading.h"
#include "zelvar/data/wire/Messages.h"
#include "zelvar/reader/RequestHandler.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <utility>

#include <fcntl.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

namespace {

using namespace zelvar;

void Require(bool condition) {
    if (!condition)
        std::abort();
}

/// Trees and images that the seeds name.
void AddDrivers() {
    auto &tree = test::ScriptedDrivers::AddTree("TREE", "*.tree");
    tree.SetTree("/a",
                 {.name = "root", .children = {{.name = "one", .children = {{.name = "leaf"}}}, {.name = "two"}}});
    auto &raster = test::ScriptedDrivers::AddRaster("RASTER");
    raster.SetImage("/a", {.channels = 6, .type = RDI_UInt16, .info = "six"});
    raster.SetImage("/p", {.palette = true});
    test::ScriptedTableDriver::Add().tables["/a"] = {.columns = 3, .rows = 9};
}

/// A page with nothing behind it: who writes too much ends here.
wire::SharedMemory const &Page() {
    constexpr std::size_t bytes = 4096;
    static auto const page = wire::SharedMemory::Create(bytes);
    Require(page != nullptr);
    return *page;
}

void Serve(wire::RequestT const &request) {
    static bool const hasDrivers = (AddDrivers(), true);
    static_cast<void>(hasDrivers);
    StopSignal const stop = false;
    reader::RequestHandler handler(stop);
    DString const *const file = reader::RequestHandler::FileOf(request.body);
    Require(file == nullptr || request.body.value != nullptr);
    wire::AnswerT answer;
    answer.number = request.number;
    try {
        auto body =
            handler.Handle(request.body, std::make_unique<FileDescriptor>(fcntl(Page().File(), F_DUPFD_CLOEXEC, 0)));
        if (!body)
            return;
        answer.body = std::move(*body);
    } catch (std::exception const &) {
        return;
    }
    auto const told = wire::Unpack<wire::Answer>(wire::Pack(answer));
    Require(told != nullptr && told->number == request.number && told->body.value != nullptr);
}

/// The application's side: whatever it takes from an answer can be.
void Consume(wire::AnswerT &answer) {
    if (auto *const opened = BodyOf<wire::ImageOpenedT>(&answer))
        for (auto const &channel : opened->channels) {
            ChannelFacts const facts = ChannelFrom(channel.get());
            Require(facts.sizeX >= 0 && facts.sizeY >= 0 && facts.geo.numSlices >= 0 && facts.geo.numTimeFrames >= 0);
            Require(facts.dataType == RDI_None || RDIGetDTSize(facts.dataType) > 0);
        }
    if (auto *const children = BodyOf<wire::ChildrenT>(&answer)) {
        std::size_t const most = children->nodes.size();
        Require(NodesFrom(std::move(*children)).size() <= most);
    }
    if (auto *const opened = BodyOf<wire::TableOpenedT>(&answer)) {
        std::size_t const most = opened->columns.size();
        Require(ColumnsFrom(std::move(*opened)).size() <= most);
    }
    if (auto *const read = BodyOf<wire::RowsReadT>(&answer)) {
        constexpr std::size_t columns = 3;
        constexpr int most = 4;
        ADIRows rows;
        if (TakeRows(std::move(*read), columns, most, rows)) {
            Require(rows.count <= most && rows.ends.size() == static_cast<std::size_t>(rows.count) * columns);
            std::size_t bytes = 0;
            for (std::size_t i = 0; i < rows.ends.size(); ++i)
                bytes += rows.Cell(i).size();
            Require(bytes == rows.texts.size());
        }
    }
    if (auto *const tree = BodyOf<wire::TreeOpenedT>(&answer); tree != nullptr && tree->root != nullptr)
        static_cast<void>(ToWire(NodeFrom(std::move(*tree->root))));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    if (auto const request = wire::Unpack<wire::Request>({data, size}); request != nullptr)
        Serve(*request);
    if (auto const answer = wire::Unpack<wire::Answer>({data, size}); answer != nullptr) {
        // A kind without a body can be received but not sent.
        if (answer->body.value != nullptr)
            Require(wire::Unpack<wire::Answer>(wire::Pack(*answer)) != nullptr);
        Consume(*answer);
    }
    return 0;
}
