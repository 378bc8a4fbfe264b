#pragma once

#include "zelvar/base/Geometry.h"

#include <cmath>

namespace zelvar {

/// The largest size in the proportions of `image` that fits into `place`; the side that is computed goes to the nearest
/// whole number, halves away from zero. Zero if a side of either is below 1.
[[nodiscard]] inline Size FitInto(Size image, Size place) {
    if (image.cx < 1 || image.cy < 1 || place.cx < 1 || place.cy < 1)
        return {};
    double const aspect = static_cast<double>(image.cx) / image.cy;
    if (static_cast<double>(place.cx) / place.cy / aspect < 1.0)
        return {place.cx, static_cast<int>(std::lround(place.cx / aspect))};
    return {static_cast<int>(std::lround(place.cy * aspect)), place.cy};
}

} // namespace zelvar
