#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace zelvar {

/// How much a folder of thumbnails may take.
struct ThumbnailBound {
    std::uint64_t bytes = std::uint64_t{500} << 20U; ///< on disk
    std::chrono::hours every{24};                    ///< between two looks, of all processes together
};

/// Takes those that nobody has looked at or made for longest out of `folder` and what lies below it until the rest is
/// within the bound. Nothing if that was done not long ago, which the time of a file ".pruned" in the folder tells, and
/// for a folder that is not there. Links are not followed. `isOver` ends it between two files. How many files went.
/// Any thread; may take seconds.
ZELVAR_API std::size_t PruneThumbnails(DString const &folder, ThumbnailBound const &bound,
                                       std::function<bool()> const &isOver);

} // namespace zelvar
