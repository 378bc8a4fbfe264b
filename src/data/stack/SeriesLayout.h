#pragma once

#include "zelvar/model/datasets/SeriesName.h"

#include <array>

namespace zelvar {

/// Which number of a series runs over what: the place of each member in a grid of slices, time frames and channels. A
/// plain value.
class SeriesLayout {
public:
    enum Axis { Slices, Frames, Channels };
    static constexpr int kAxes = 3;

    /// One number runs over `only`, slices or time frames. Of several each runs over what the word before it says ("t",
    /// "time", "frame", "z", "s", "slice", "plane", "c", "ch", "channel", "w"); those without such a word over what is
    /// left, the fastest one over `only`. Numbers that share an axis are one number there, the last one the fastest.
    /// For a name with fewer than 2^64 - 1 slots.
    SeriesLayout(SeriesName const &name, Axis only);

    [[nodiscard]] std::uint64_t Count(Axis axis) const { return m_counts[axis]; }
    /// The member at a place, each below its `Count`.
    using Place = std::array<std::uint64_t, kAxes>;
    [[nodiscard]] std::uint64_t SlotAt(Place place) const;

private:
    struct Number {
        Axis axis = Slices;
        std::uint64_t count = 1;
        std::uint64_t stride = 1; ///< slots from one of its values to the next
    };
    std::vector<Number> m_numbers; ///< from left to right
    std::array<std::uint64_t, kAxes> m_counts{1, 1, 1};
};

} // namespace zelvar
