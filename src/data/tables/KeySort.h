#pragma once

#include "zelvar/data/tables/SharedWork.h"

#include <cstdint>
#include <span>

namespace zelvar {

/// Sorts rows by the words beside them, rows of equal words by their numbers, in place: the words go with their rows.
/// Both spans are of one length. False if it is stopped; then the pairs stand in some order.
[[nodiscard]] bool SortByKeys(std::span<std::uint64_t> keys, std::span<std::uint32_t> rows, SharedWork &work);

} // namespace zelvar
