#pragma once

#include <cstdint>

namespace zelvar {

/// A colour as 0x00BBGGRR: red in the lowest byte.
using ColorRef = std::uint32_t;

[[nodiscard]] constexpr ColorRef Rgb(unsigned red, unsigned green, unsigned blue) {
    return (red & 0xFFU) | (green & 0xFFU) << 8U | (blue & 0xFFU) << 16U;
}
[[nodiscard]] constexpr unsigned RedOf(ColorRef color) { return color & 0xFFU; }
[[nodiscard]] constexpr unsigned GreenOf(ColorRef color) { return color >> 8U & 0xFFU; }
[[nodiscard]] constexpr unsigned BlueOf(ColorRef color) { return color >> 16U & 0xFFU; }

/// Colours of the desktop by their customary numbers; `platform::SystemColor` looks them up.
enum SystemColorIndex {
    COLOR_WINDOW = 5,
    COLOR_WINDOWTEXT = 8,
    COLOR_HIGHLIGHT = 13,
    COLOR_HIGHLIGHTTEXT = 14,
    COLOR_BTNFACE = 15,
    COLOR_3DSHADOW = 16,
    COLOR_BTNTEXT = 18,
    COLOR_3DHIGHLIGHT = 20,
};

} // namespace zelvar
