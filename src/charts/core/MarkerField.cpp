#include "zelvar/charts/core/MarkerField.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace zelvar {

namespace {

using Word = PixelRows::Word;
using Bits = std::vector<Word>;

constexpr int kBits = PixelRows::kBits;

/// Where the logical pixels of one side lie on a device.
struct Side {
    std::vector<int> pixel;                 ///< by logical pixel
    std::vector<std::size_t> fractionIndex; ///< by logical pixel
    std::vector<double> fractions;          ///< those that occur, a few with the ratios of real screens
    std::vector<int> examples;              ///< a logical pixel with that fraction, away from the edge if there is one
};

Side Place(int length, double ratio) {
    constexpr double steps = 64; // the toolkit's own fractions of a pixel
    constexpr int reach = 16;
    Side side;
    for (int i = 0; i < length; ++i) {
        double const at = std::round(i * ratio * steps) / steps;
        double const fraction = at - std::floor(at);
        auto const known = std::find(side.fractions.begin(), side.fractions.end(), fraction);
        side.pixel.push_back(static_cast<int>(std::floor(at)));
        side.fractionIndex.push_back(static_cast<std::size_t>(known - side.fractions.begin()));
        if (known == side.fractions.end()) {
            side.fractions.push_back(fraction);
            side.examples.push_back(i);
        } else if (int &example = side.examples[side.fractionIndex.back()]; example < reach) {
            example = i;
        }
    }
    return side;
}

/// `target |= source` moved to the right by `shift` pixels, or to the left by a negative one.
void OrShifted(Word *target, Bits const &source, int shift) {
    auto const words = static_cast<int>(source.size());
    int const whole = shift >= 0 ? shift / kBits : -((-shift + kBits - 1) / kBits);
    auto const rest = static_cast<unsigned>(shift - whole * kBits);
    for (int i = std::max(0, whole); i < std::min(words, words + whole + 1); ++i) {
        int const from = i - whole;
        Word value = from < words ? source[static_cast<std::size_t>(from)] << rest : 0;
        if (rest != 0 && from > 0)
            value |= source[static_cast<std::size_t>(from - 1)] >> (kBits - rest);
        target[i] |= value;
    }
}

/// `target |= source` moved by each of `first` to `last` pixels.
void OrSpread(Word *target, Bits const &source, int first, int last) {
    // A row that is already spread by n pixels spreads to 2n in one step.
    Bits spread = source;
    int const length = last - first + 1;
    int done = 1;
    while (done * 2 <= length) {
        Bits const before = spread;
        OrShifted(spread.data(), before, done);
        done *= 2;
    }
    OrShifted(target, spread, first);
    if (done < length)
        OrShifted(target, spread, first + length - done);
}

} // namespace

void PixelRows::Add(PixelRows const &other) {
    for (std::size_t i = 0; i < m_words.size(); ++i)
        m_words[i] |= other.m_words[i];
}

PixelRows::PixelRows(int width, int height) {
    if (width < 1 || height < 1)
        return;
    m_width = width;
    m_height = height;
    m_wordsARow = (width + kBits - 1) / kBits + 1;
    m_words.resize(static_cast<std::size_t>(m_wordsARow) * static_cast<std::size_t>(height));
}

PixelRows MarkerField::Render(double ratio, ShapeAt const &shapeAt) const {
    PixelRows device(static_cast<int>(std::ceil(m_places.Width() * ratio)),
                     static_cast<int>(std::ceil(m_places.Height() * ratio)));
    if (device.IsEmpty())
        return device;
    Side const columns = Place(m_places.Width(), ratio);
    Side const rows = Place(m_places.Height(), ratio);
    std::map<std::pair<std::size_t, std::size_t>, MarkerShape> shapes;
    auto const shapeOf = [&](std::size_t x, std::size_t y) -> MarkerShape const & {
        auto [at, isNew] = shapes.try_emplace({x, y});
        if (isNew)
            at->second = shapeAt(columns.examples[x], rows.examples[y]);
        return at->second;
    };

    // What is spread over the right edge and moved back to the left lies in the row's last word meanwhile.
    std::vector<Bits> placed(columns.fractions.size(), Bits(static_cast<std::size_t>(device.WordsARow())));
    for (int y = 0; y < m_places.Height(); ++y) {
        Word const *const row = m_places.Row(y);
        std::vector<bool> used(placed.size());
        for (int word = 0; word < m_places.WordsARow(); ++word)
            for (Word bits = row[word]; bits != 0; bits &= bits - 1) {
                int const column = word * kBits + std::countr_zero(bits);
                auto const x = static_cast<std::size_t>(column);
                std::size_t const group = columns.fractionIndex[x];
                auto const pixel = static_cast<unsigned>(columns.pixel[x]);
                placed[group][pixel / kBits] |= Word{1} << (pixel % kBits);
                used[group] = true;
            }
        for (std::size_t group = 0; group < placed.size(); ++group) {
            if (!used[group])
                continue;
            MarkerShape const &shape = shapeOf(group, rows.fractionIndex[static_cast<std::size_t>(y)]);
            int target = rows.pixel[static_cast<std::size_t>(y)] + shape.top;
            for (auto const &[first, last] : shape.spans) {
                if (target >= 0 && target < device.Height() && first <= last)
                    OrSpread(device.Row(target), placed[group], first, last);
                ++target;
            }
            std::fill(placed[group].begin(), placed[group].end(), 0);
        }
    }
    return device;
}

} // namespace zelvar
