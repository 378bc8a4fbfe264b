#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zelvar {

/// Name of a series of files that differ in numbers alone: "s[001-120].tif", "t[1-3]_z[01-17].tif", and with a step,
/// "s[000-090:10].tif". A plain value.
///
/// A number is written with leading zeros up to `digits`, larger ones are longer: that of "[1-120]" has one digit or
/// more. Other brackets do not occur in such a name.
class ZELVAR_API SeriesName {
public:
    /// The values that one number runs through, both ends included.
    struct Range {
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        std::uint64_t step = 1;
        int digits = 1;

        [[nodiscard]] std::uint64_t Count() const { return (last - first) / step + 1; }
        friend bool operator==(Range const &, Range const &) = default;
    };
    using Values = std::vector<std::uint64_t>; ///< one a number, from left to right

    /// Longer runs of digits are text like any other.
    static constexpr std::size_t kMostDigits = 18;

    /// Nothing if `text`, a name without a folder, is none of a series.
    [[nodiscard]] static std::optional<SeriesName> Parse(std::string_view text);
    /// `texts` stand before, between and behind the numbers: one more than ranges.
    SeriesName(std::vector<DString> texts, std::vector<Range> ranges);

    [[nodiscard]] DString Text() const;
    [[nodiscard]] std::vector<DString> const &Texts() const { return m_texts; }
    [[nodiscard]] std::vector<Range> const &Ranges() const { return m_ranges; }
    /// How many members there can be; the greatest number for more than that.
    [[nodiscard]] std::uint64_t Slots() const;
    /// The numbers of a member's name; nothing for any other name.
    [[nodiscard]] std::optional<Values> ValuesOf(std::string_view name) const;
    [[nodiscard]] DString MemberName(Values const &values) const;
    /// The same, of the slot so far from the first one; the last number runs fastest. Below `Slots()`.
    [[nodiscard]] Values ValuesAt(std::uint64_t slot) const;
    [[nodiscard]] std::uint64_t SlotOf(Values const &values) const;

    friend bool operator==(SeriesName const &, SeriesName const &) = default;

private:
    std::vector<DString> m_texts;
    std::vector<Range> m_ranges;
};

/// Which of a series' members are missing: "17, 64", runs of more than two as "5-9", several numbers of a member as
/// "2/17", and "..." behind the first six. `slots` are those that are there, ascending.
[[nodiscard]] ZELVAR_API DString MissingOf(SeriesName const &name, std::vector<std::uint64_t> const &slots);

/// How many of a series' members are there, and which are not: "120", or "118 of 120, missing 17, 64". For scripts.
[[nodiscard]] ZELVAR_API DString SeriesSummary(SeriesName const &name, std::vector<std::uint64_t> const &slots);

} // namespace zelvar
