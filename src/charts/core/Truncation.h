#pragma once

namespace zelvar {

/// Pixels lie between these: far outside of any window, and still whole numbers to every drawing operation.
inline constexpr int kFarthestPixel = 1'000'000;

/// A place in pixels: cut towards zero, not rounded. What is not finite, or too far out, becomes the farthest pixel;
/// NaN becomes 0.
[[nodiscard]] inline int TruncatedPixel(double place) {
    constexpr double farthest = kFarthestPixel;
    double const number = place == place ? place : 0; // NOLINT(misc-redundant-expression): false for NaN
    double const near = number < -farthest ? -farthest : number;
    return static_cast<int>(near > farthest ? farthest : near);
}

} // namespace zelvar
