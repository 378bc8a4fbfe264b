#include "zelvar/data/stack/SeriesLayout.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(SeriesLayout, WordsBeforeTheNumbersSayWhatTheyRunOver) {
    // `counts`: slices, frames, channels; `slot`: at the last place but one on each axis of more than one
    constexpr auto kSlices = SeriesLayout::Slices;
    constexpr auto kFrames = SeriesLayout::Frames;
    test::Rows<char const *, SeriesLayout::Axis, std::array<std::uint64_t, 3>, std::uint64_t> const cases = {
        {"s[001-120].tif", kSlices, {120, 1, 1}, 118},
        {"t[001-120].tif", kSlices, {120, 1, 1}, 118}, // a single number is told by the option alone
        {"s[000-090:10].tif", kFrames, {1, 10, 1}, 8},
        {"t[1-4]_c[1-3]_z[01-17].tif", kSlices, {17, 4, 3}, (2 * 3 + 1) * 17 + 15},
        {"Time_[1-4]-CH[1-3]-plane[01-17].tif", kFrames, {17, 4, 3}, (2 * 3 + 1) * 17 + 15},
        {"w[1-2]x[1-3]y[1-4].tif", kSlices, {4, 3, 2}, (0 * 3 + 1) * 4 + 2},
        {"w[1-2]x[1-3]y[1-4].tif", kFrames, {3, 4, 2}, (0 * 3 + 1) * 4 + 2},
        {"cells[1-3]_[1-4].tif", kSlices, {4, 3, 1}, 1 * 4 + 2},  // no word, but its end
        {"z[1-3]_[1-4].tif", kSlices, {3, 4, 1}, 1 * 4 + 2},      // slices are taken
        {"z[1-3]s[1-4].tif", kSlices, {12, 1, 1}, 10},            // one number in two parts
        {"a[1-2]b[1-2]c[1-2]d[1-3].tif", kSlices, {3, 2, 4}, 13}, // "a" is left over
    };
    for (auto const &[name, only, counts, slot] : cases) {
        SCOPED_TRACE(name);
        SeriesLayout const layout(*SeriesName::Parse(name), only);
        SeriesLayout::Place place{};
        for (int axis = 0; axis < SeriesLayout::kAxes; ++axis) {
            auto const at = static_cast<std::size_t>(axis);
            EXPECT_EQ(layout.Count(static_cast<SeriesLayout::Axis>(axis)), counts[at]) << axis;
            place[at] = counts[at] > 1 ? counts[at] - 2 : 0;
        }
        EXPECT_EQ(layout.SlotAt(place), slot);
    }
}

} // namespace
} // namespace zelvar
