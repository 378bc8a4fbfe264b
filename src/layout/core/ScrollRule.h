#pragma once

#include "zelvar/base/Geometry.h"

namespace zelvar {

/// Which scroll bars a window has, and what they leave of it.
struct ScrollNeed {
    bool horizontal = false;
    bool vertical = false;
    Size client{}; ///< pixels

    friend bool operator==(ScrollNeed const &, ScrollNeed const &) = default;
};

/// The bars that a window of that size needs to reach all of `content`. A bar takes `thickness` pixels of the other
/// axis, which may need its bar for that alone.
[[nodiscard]] ScrollNeed ComputeScrollNeed(Size window, Size content, int thickness);

/// By how much to scroll one axis so that the span from `near` to `far` lies within `room` pixels; its beginning where
/// it is longer than that.
[[nodiscard]] int ScrollIntoView(int near, int far, int room);

} // namespace zelvar
