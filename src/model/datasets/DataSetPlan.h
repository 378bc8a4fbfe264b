#pragma once

#include "zelvar/model/datasets/SeriesFinder.h"

namespace zelvar {

/// What of a folder is shown as one.
struct DataSetFolding {
    bool sidecars = false; ///< files that belong to another one stand under it
    bool series = false;   ///< numbered files are one row
    bool folders = false;  ///< folders that are data are no folders

    friend bool operator==(DataSetFolding const &, DataSetFolding const &) = default;
};

/// How the files of one folder come together, by their names.
struct DataSetPlan {
    std::vector<std::uint32_t> masters; ///< of each file, its own place for one that stands alone
    std::vector<FoundSeries> series;    ///< of those that stand alone
    std::vector<bool> isMember;         ///< of each file, whether it is in a series
};

[[nodiscard]] ZELVAR_API DataSetPlan PlanDataSets(std::span<std::string_view const> files, DataSetFolding folding);

} // namespace zelvar
