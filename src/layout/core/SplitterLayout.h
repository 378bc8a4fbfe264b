#pragma once

#include "zelvar/base/Export.h"

#include <optional>
#include <vector>

namespace zelvar {

/// A row or column of a splitter along its own axis, pixels.
struct SplitterTrack {
    int ideal = 0;   ///< wanted
    int minimum = 0; ///< below it the track is closed
    int current = 0; ///< as laid out last
};

/// Lays the tracks out one behind the other in `total` pixels with bars of `bar` pixels between them: each takes its
/// ideal size as long as there is room, the last one the rest. A track below its minimum is closed: size 0.
ZELVAR_API void LayOutTracks(std::vector<SplitterTrack> &tracks, int total, int bar);

/// Size of the new track when `last` is split `at` pixels from its beginning by a bar of `bar` pixels; nothing if one
/// of the two parts would be below the minimum.
[[nodiscard]] ZELVAR_API std::optional<int> SplitTrack(SplitterTrack const &last, int at, int bar);

} // namespace zelvar
