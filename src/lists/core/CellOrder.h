#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace zelvar {

/// What a row is sorted by.
struct CellKey {
    std::uint64_t order = 0; ///< made by the sort
    char const *text = nullptr;
    std::uint32_t id = 0;
};

/// Orders rows by the texts of their cells. Both texts are read as numbers; if both are 0 the texts themselves count,
/// case of ASCII letters not regarded, else the numbers. Ascending, numbers go from large to small and texts from A to
/// Z; descending it is the other way round. A text that begins with no number is 0.
///
/// This is a true order: the numbers above 0, those that are 0 by their texts, the numbers below 0. Each text is read
/// once, so a comparison never contradicts another one. What compares as equal stays as it stood. The number of a text
/// is `SortNumberOf`.
///
/// False, with `ids` untouched, if `isStopped` (may be empty) says so, which is asked every few thousand steps.
[[nodiscard]] bool OrderByCells(std::vector<CellKey> keys, bool ascending, std::function<bool()> const &isStopped,
                                std::vector<std::uint32_t> &ids);

} // namespace zelvar
