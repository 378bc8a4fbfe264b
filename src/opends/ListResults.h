#pragma once

#include "zelvar/lists/core/LastSort.h"
#include "zelvar/model/listing/PaneState.h"
#include "zelvar/opends/ResultOrder.h"

#include <cstdint>
#include <vector>

namespace zelvar {

/// A list that shows what was found: the order of the results, and the listing that comes back after them.
struct ListResults {
    ResultOrder order{};
    std::vector<DString> bases{}; ///< paths that the folders of results are told from
    // The listing.
    std::vector<RefItemPtr<DataSourceItem>> rows{};
    std::vector<std::uint32_t> selected{};
    int focus = -1;
    int scroll = 0;
    LastSort sort{};
    PaneState state{};    ///< what it was made from
    bool isStale = false; ///< it is to be listed anew
};

} // namespace zelvar
