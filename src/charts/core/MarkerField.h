#pragma once

#include "zelvar/base/Export.h"

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace zelvar {

/// A picture of two colours: one bit a pixel, rows of whole words, the lowest bit the leftmost pixel. Each row ends
/// with a word of no pixels, whose bits mean nothing.
class ZELVAR_API PixelRows {
public:
    using Word = std::uint64_t;

    /// A side below 1 makes it empty.
    PixelRows(int width, int height);
    [[nodiscard]] int Width() const { return m_width; }
    [[nodiscard]] int Height() const { return m_height; }
    [[nodiscard]] int WordsARow() const { return m_wordsARow; }
    [[nodiscard]] Word *Row(int y) { return m_words.data() + Offset(y); }
    [[nodiscard]] Word const *Row(int y) const { return m_words.data() + Offset(y); }
    void Set(int x, int y) { Row(y)[x / kBits] |= Word{1} << static_cast<unsigned>(x % kBits); }
    [[nodiscard]] bool Has(int x, int y) const {
        return (Row(y)[x / kBits] >> static_cast<unsigned>(x % kBits) & 1U) != 0;
    }
    [[nodiscard]] bool IsEmpty() const { return m_words.empty(); }
    /// The pixels of another picture of the same size.
    void Add(PixelRows const &other);

    static constexpr int kBits = 64;

private:
    [[nodiscard]] std::size_t Offset(int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_wordsARow);
    }
    int m_width = 0;
    int m_height = 0;
    int m_wordsARow = 0;
    std::vector<Word> m_words;
};

/// The pixels of a marker on a device, relative to the pixel that its place lies in: row `top + i` is filled from
/// `spans[i].first` to `spans[i].second`, both included.
struct MarkerShape {
    int top = 0;
    std::vector<std::pair<int, int>> spans;
};

/// Markers of one shape and colour: however many points fall on a pixel, its marker is drawn once. All of them together
/// cost a few operations on bits a row, not one drawing a point.
class ZELVAR_API MarkerField {
public:
    /// Places are logical pixels from 0 to below `width` and `height`.
    MarkerField(int width, int height) : m_places(width, height) {}

    /// Places outside, farther than a marker reaches, are passed over.
    void Add(int x, int y) {
        if (x >= 0 && y >= 0 && x < m_places.Width() && y < m_places.Height())
            m_places.Set(x, y);
    }

    /// The places of another field of the same size.
    void Add(MarkerField const &other) { m_places.Add(other.m_places); }

    /// The shape of a marker at a logical pixel; it is asked for one of all that lie alike in the device's pixels.
    using ShapeAt = std::function<MarkerShape(int x, int y)>;
    /// The pixels of all markers on a device with `ratio` pixels for a logical one.
    [[nodiscard]] PixelRows Render(double ratio, ShapeAt const &shapeAt) const;

private:
    PixelRows m_places;
};

} // namespace zelvar
