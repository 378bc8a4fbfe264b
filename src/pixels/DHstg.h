#pragma once

#include "zelvar/base/Export.h"

#include <cstdint>
#include <span>
#include <vector>

namespace zelvar {

/// Histogram data: how many values fall into each of the slots of equal width that a range is divided into.
///
/// Slot i begins at `GetSlotClss(i)`; a value belongs to the last slot that begins at or below it, the maximum to the
/// last slot. Every count is found by comparing values with these edges, so that none depends on how a quotient was
/// rounded. Values outside the range, NaN and infinities are not counted.
class ZELVAR_API DHstg {
public:
    /// No slots.
    DHstg() = default;
    /// Empty slots over a range. Below 0 slots, a range that is not finite, or a maximum below the minimum gives none.
    DHstg(int numSlots, double minimum, double maximum);

    int m_numSlot = 0; ///< fixed by the constructor, as are the next two
    double m_minimum = 0;
    double m_maximum = 0;

    /// Count in the slot; 0 for a slot outside.
    [[nodiscard]] int GetSlotVal(int slot) const;
    /// The value at the slot's left edge. The slot behind the last begins at the maximum; others outside are the
    /// nearest.
    [[nodiscard]] double GetSlotClss(int slot) const;
    /// The slot that the value falls in; -1 for one that is not counted.
    [[nodiscard]] int GetSlotIndx(double value) const;
    [[nodiscard]] int GetMaxVal() const;  ///< largest count of all slots
    [[nodiscard]] int GetHstgSum() const; ///< sum of all counts, at most the largest `int`

    void AddValue(double value, std::uint64_t times = 1);
    /// Counts samples of a type; those equal to `*nodata` are left out.
    template <class Sample>
    void AddSamples(std::span<Sample const> samples, double const *nodata = nullptr);

    /// The smallest and largest finite sample but `*nodata`; false if there is none, and both unchanged.
    template <class Sample>
    static bool FindRange(std::span<Sample const> samples, double const *nodata, double &minimum, double &maximum);
    /// No finite sample but `*nodata` has a fraction, and none is so large that whole numbers are no longer told apart.
    template <class Sample>
    static bool AreWhole(std::span<Sample const> samples, double const *nodata);
    /// Empty slots for whole numbers from `minimum` to `maximum`, a whole number wide, so that each may hold as many
    /// values as the next. There are `numSlots` of them or fewer, and the last may end beyond the maximum.
    [[nodiscard]] static DHstg ForWholeNumbers(int numSlots, double minimum, double maximum);
    /// The histogram of samples over their own range; with slots for whole numbers where all are.
    template <class Sample>
    [[nodiscard]] static DHstg FromSamples(std::span<Sample const> samples, int numSlots,
                                           double const *nodata = nullptr);

private:
    void AddCounts(std::uint64_t const *counts, int lowest, int howMany, double const *nodata);
    [[nodiscard]] int SlotOf(double value) const; ///< of a value inside the range

    double m_slotsPerUnit = 0;
    std::vector<double> m_edges;         ///< one more than slots
    std::vector<std::uint64_t> m_counts; ///< one a slot
};

// NOLINTBEGIN(bugprone-macro-parentheses): no type can stand in parentheses
#define ZELVAR_HISTOGRAM_SAMPLES(declare, Sample)                                                                      \
    declare template ZELVAR_API void DHstg::AddSamples<Sample>(std::span<Sample const>, double const *);               \
    declare template ZELVAR_API bool DHstg::FindRange<Sample>(std::span<Sample const>, double const *, double &,       \
                                                              double &);                                               \
    declare template ZELVAR_API bool DHstg::AreWhole<Sample>(std::span<Sample const>, double const *);                 \
    declare template ZELVAR_API DHstg DHstg::FromSamples<Sample>(std::span<Sample const>, int, double const *)
// NOLINTEND(bugprone-macro-parentheses)
ZELVAR_HISTOGRAM_SAMPLES(extern, std::uint8_t);
ZELVAR_HISTOGRAM_SAMPLES(extern, std::int8_t);
ZELVAR_HISTOGRAM_SAMPLES(extern, std::uint16_t);
ZELVAR_HISTOGRAM_SAMPLES(extern, std::int16_t);
ZELVAR_HISTOGRAM_SAMPLES(extern, std::uint32_t);
ZELVAR_HISTOGRAM_SAMPLES(extern, std::int32_t);
ZELVAR_HISTOGRAM_SAMPLES(extern, float);
ZELVAR_HISTOGRAM_SAMPLES(extern, double);

} // namespace zelvar
