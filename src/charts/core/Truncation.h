#pragma once

#include <algorithm>
#include <cmath>

namespace zelvar {

/// Pixels lie between these: far outside of any window, and still whole numbers to every drawing operation.
inline constexpr int kFarthestPixel = 1'000'000;

/// A place in pixels: cut towards zero, not rounded. What is not finite, or too far out, becomes the farthest pixel;
/// NaN becomes 0.
[[nodiscard]] inline int TruncatedPixel(double place) {
    if (std::isnan(place))
        return 0;
    return static_cast<int>(
        std::clamp(place, -static_cast<double>(kFarthestPixel), static_cast<double>(kFarthestPixel)));
}

} // namespace zelvar
