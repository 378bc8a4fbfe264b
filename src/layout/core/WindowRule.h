#pragma once

#include "zelvar/base/Geometry.h"

namespace zelvar {

/// How a window may be resized by its user; whole windows, borders included.
struct TrackSizes {
    Size min{};
    Size max{}; ///< 0 in an axis that is not limited
    friend bool operator==(TrackSizes const &, TrackSizes const &) = default;
};

/// The limits from the smallest and largest client size, the latter 0 for none, and the border. An axis that is not
/// free has its minimum as its maximum.
[[nodiscard]] TrackSizes ComputeTrackSizes(Size minClient, Size maxClient, Size border, bool freeWidth,
                                           bool freeHeight);

/// `window` made bigger by `growth`, half of it on each side; the odd pixel goes to the right and the bottom.
[[nodiscard]] Rect StretchedRect(Rect const &window, Size growth);

/// `rect` with its edges in order.
[[nodiscard]] Rect NormalizedRect(Rect const &rect);

/// True if a window there shows on the screens by more than their outermost five pixels.
[[nodiscard]] bool IsReachable(Rect const &window, Rect const &virtualScreen);

} // namespace zelvar
