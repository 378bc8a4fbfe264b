#pragma once

#include "zelvar/model/datasets/SeriesFinder.h"

namespace zelvar {

/// What of a folder is shown as one.
struct DataSetFolding {
    bool sidecars = false; ///< files that belong to another one stand under it
    bool series = false;   ///< numbered files are one row
    bool folders = false;  ///< folders that are data are no folders

    /// A number for each way to fold; 0 for none.
    [[nodiscard]] unsigned Number() const { return (sidecars ? 1U : 0U) | (series ? 2U : 0U) | (folders ? 4U : 0U); }
    [[nodiscard]] bool IsAny() const { return sidecars || series || folders; }
    friend bool operator==(DataSetFolding const &, DataSetFolding const &) = default;
};

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
