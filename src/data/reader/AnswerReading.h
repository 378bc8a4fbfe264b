#pragma once

#include "zelvar/data/RDIDriver.h"
#include "zelvar/data/reader/NodeMessage.h"
#include "zelvar/data/tables/ADIDriver.h"

#include <memory>
#include <span>
#include <vector>

namespace zelvar {

// What stands in an answer is taken from here. A reader that a driver has damaged may say anything in the right form:
// bodies of another kind, parts left out, figures that cannot be.

/// The body, if it is of that kind and there; null otherwise, as for an answer that is null.
template <class Body>
[[nodiscard]] Body *BodyOf(wire::AnswerT *answer) {
    using Traits = wire::AnswerBodyUnionTraits<Body>;
    bool const isThere = answer != nullptr && answer->body.type == Traits::enum_value;
    return isThere ? static_cast<Body *>(answer->body.value) : nullptr;
}

/// Why there is no such answer: what the reader says, else `otherwise`, why it says nothing.
[[nodiscard]] DError FailureOf(wire::AnswerT const *answer, DError const &otherwise);

/// What it says of a failure; not set for null.
[[nodiscard]] DError ErrorFrom(wire::FailedT const *failed);

/// Those that are there.
[[nodiscard]] std::vector<BDINode> NodesFrom(wire::ChildrenT &&children);

/// Figures of a channel.
struct ChannelFacts {
    int sizeX = 0; ///< below 0 never
    int sizeY = 0; ///< below 0 never
    int dataType = RDI_None;
    RDIGeoCoo geo;
};
/// Of a channel that is not there, and of one whose figures cannot be: zeros.
[[nodiscard]] ChannelFacts ChannelFrom(wire::ChannelT const *channel);

/// Columns with names that are valid UTF-8 and types that are known.
[[nodiscard]] std::vector<ADIColumn> ColumnsFrom(wire::TableOpenedT &&opened);

/// The rows of a table with so many columns, `most` of them or fewer; false, and `rows` unchanged, if what was told of
/// them cannot be.
[[nodiscard]] bool TakeRows(wire::RowsReadT &&read, std::size_t columns, int most, ADIRows &rows);

/// Copies an order of rows, which the reader can still write to: what is there is looked at once. False if it is none,
/// as each number from 0 on must stand there once, and if the scope around says to stop.
[[nodiscard]] bool TakeOrder(std::span<std::uint32_t const> from, std::vector<std::uint32_t> &rows);

} // namespace zelvar
