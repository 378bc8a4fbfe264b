#pragma once

#include "zelvar/model/datasets/SeriesName.h"

#include <span>

namespace zelvar {

/// A series among the names of one folder.
struct FoundSeries {
    SeriesName name;
    std::vector<std::uint32_t> members; ///< their places among the names, in the order of their numbers
    std::vector<std::uint64_t> slots;   ///< of `name`, one a member, ascending
};

/// The series among `names`, which differ from each other: ten or more that agree in all but their numbers, where at
/// least half of the numbers between the first and the last are there. Names that cannot be told from the name of a
/// series, because they hold brackets, belong to none. Takes time as sorting the names does.
[[nodiscard]] ZELVAR_API std::vector<FoundSeries> FindSeries(std::span<std::string_view const> names);

} // namespace zelvar
