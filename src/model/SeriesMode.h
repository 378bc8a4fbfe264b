#pragma once

namespace zelvar {

/// What an application gets for numbered files that were picked as one.
enum class SeriesMode {
    Members, ///< a moniker for each file, in the order of their numbers
    Slices,  ///< one moniker of one image, whose slices they are
    Frames,  ///< the same with time frames
};

} // namespace zelvar
