#pragma once

#include "zelvar/base/Color.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelvar {

/// A picture in memory: three bytes a pixel in the order red, green, blue, rows packed, top row first.
class DCanvas {
public:
    /// A black picture of that size; a side below 1 clears. Sides are at most 32,768.
    void SetSize(int width, int height) {
        if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
            Clear();
            return;
        }
        m_width = width;
        m_height = height;
        m_pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 0);
    }
    void Clear() {
        m_width = m_height = 0;
        m_pixels.clear();
        m_pixels.shrink_to_fit();
    }
    void Copy(DCanvas const &other) { *this = other; }
    [[nodiscard]] bool HasData() const { return !m_pixels.empty(); }
    [[nodiscard]] int GetWidth() const { return m_width; }
    [[nodiscard]] int GetHeight() const { return m_height; }

    /// Red in the lowest byte. Outside the picture nothing happens.
    void SetPixel(int x, int y, ColorRef color) {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height)
            return;
        std::uint8_t *pixel = Row(y) + static_cast<std::size_t>(x) * 3;
        pixel[0] = static_cast<std::uint8_t>(RedOf(color));
        pixel[1] = static_cast<std::uint8_t>(GreenOf(color));
        pixel[2] = static_cast<std::uint8_t>(BlueOf(color));
    }
    /// 0 outside the picture.
    [[nodiscard]] ColorRef GetPixel(int x, int y) const {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height)
            return 0;
        std::uint8_t const *pixel = Row(y) + static_cast<std::size_t>(x) * 3;
        return Rgb(pixel[0], pixel[1], pixel[2]);
    }
    /// `3 * GetWidth()` bytes.
    [[nodiscard]] std::uint8_t *Row(int y) { return m_pixels.data() + Offset(y); }
    [[nodiscard]] std::uint8_t const *Row(int y) const { return m_pixels.data() + Offset(y); }

    static constexpr int kMaxSide = 32768;

private:
    [[nodiscard]] std::size_t Offset(int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) * 3;
    }
    int m_width = 0;
    int m_height = 0;
    std::vector<std::uint8_t> m_pixels;
};

} // namespace zelvar
