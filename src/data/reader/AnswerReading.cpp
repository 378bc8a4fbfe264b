#include "zelvar/data/reader/AnswerReading.h"

#include "zelvar/data/RequestScope.h"

#include <algorithm>
#include <utility>

namespace zelvar {

DError ErrorFrom(wire::FailedT const *failed) {
    using Cause = DError::Cause;
    DError error;
    if (failed != nullptr && !failed->reason.empty())
        error.Set(failed->reason,
                  failed->cause <= static_cast<std::uint32_t>(DError::kLastCause) ? static_cast<Cause>(failed->cause)
                                                                                  : Cause::Unknown,
                  std::max<std::int64_t>(failed->detail, -1));
    return error;
}

DError FailureOf(wire::AnswerT const *answer, DError const &otherwise) {
    if (answer == nullptr)
        return otherwise;
    DError error = ErrorFrom(answer->body.AsFailed());
    if (!error.IsSet())
        error.Set("its reader says nothing of use");
    return error;
}

std::vector<BDINode> NodesFrom(wire::ChildrenT &&children) {
    std::vector<BDINode> nodes;
    nodes.reserve(children.nodes.size());
    for (std::unique_ptr<wire::NodeT> const &child : children.nodes)
        if (child != nullptr)
            nodes.push_back(NodeFrom(std::move(*child)));
    return nodes;
}

ChannelFacts ChannelFrom(wire::ChannelT const *channel) {
    if (channel == nullptr || channel->sizeX < 0 || channel->sizeY < 0 || RDIGetDTSize(channel->dataType) == 0 ||
        channel->slices < 0 || channel->timeFrames < 0)
        return {};
    return {channel->sizeX, channel->sizeY, channel->dataType, {channel->slices, channel->timeFrames}};
}

std::vector<ADIColumn> ColumnsFrom(wire::TableOpenedT &&opened) {
    std::vector<ADIColumn> columns;
    columns.reserve(opened.columns.size());
    for (std::unique_ptr<wire::TableColumnT> const &column : opened.columns)
        if (column != nullptr) {
            bool const isNumber = column->type == ADICol_Int || column->type == ADICol_Double;
            columns.push_back({.name = ToValidUtf8(column->name),
                               .type = isNumber ? static_cast<ADIColType>(column->type) : ADICol_String});
        }
    return columns;
}

bool TakeOrder(std::span<std::uint32_t const> from, std::vector<std::uint32_t> &rows) {
    constexpr std::size_t rowsPerLook = std::size_t{1} << 18U;
    std::vector<bool> seen(from.size());
    rows.resize(from.size());
    for (std::size_t place = 0; place < from.size(); ++place) {
        std::uint32_t const row = rows[place] = from[place];
        if (row >= seen.size() || seen[row])
            return false;
        seen[row] = true;
        RequestScope const *const scope = place % rowsPerLook == 0 ? RequestScope::Current() : nullptr;
        if (scope != nullptr && scope->IsStopped())
            return false;
    }
    return true;
}

bool TakeRows(wire::RowsReadT &&read, std::size_t columns, int most, ADIRows &rows) {
    if (read.count < 0 || read.count > most || read.ends.size() != static_cast<std::size_t>(read.count) * columns ||
        !std::is_sorted(read.ends.begin(), read.ends.end()) ||
        (!read.ends.empty() && read.ends.back() != read.texts.size()))
        return false;
    rows.count = read.count;
    rows.isEnd = read.isEnd || read.count == 0; // who has nothing more to give is at the end
    rows.texts = std::move(read.texts);
    rows.ends = std::move(read.ends);
    return true;
}

} // namespace zelvar
