#pragma once

#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/model/datasets/SeriesFinder.h"

namespace zelvar {

/// How the files of one folder come together, by their names.
struct DataSetPlan {
    std::vector<std::uint32_t> masters; ///< of each file, its own place for one that stands alone
    std::vector<FoundSeries> series;    ///< of those that stand alone and are wanted
    std::vector<bool> isMember;         ///< of each file, whether it is in a series
};

/// `isWanted` tells of each file whether it would be listed; the others are there for what they belong to. A file
/// belongs to none that is not wanted.
[[nodiscard]] ZELVAR_API DataSetPlan PlanDataSets(std::span<std::string_view const> files,
                                                  std::vector<bool> const &isWanted, DataSetFolding folding);

} // namespace zelvar
