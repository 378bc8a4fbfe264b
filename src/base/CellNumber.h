#pragma once

#include "zelvar/base/Export.h"

#include <bit>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zelvar {

/// The number that a cell's text begins with, whatever the locale: blanks, a sign, decimal or hexadecimal digits, "inf"
/// or "nan". Nothing if it begins with none.
[[nodiscard]] ZELVAR_API std::optional<double> ParseCellNumber(std::string_view text);

/// The number that a cell counts as in a sort: what `ParseCellNumber` reads, but words are none. "nan" is 0 as any word
/// is, and infinite is what says so and no more ("-inf"), or a number too large to be held. A text that begins with no
/// number is 0.
[[nodiscard]] ZELVAR_API double SortNumberOf(std::string_view text);

/// Numbers as words that compare in the same way.
[[nodiscard]] inline std::uint64_t SortWordOf(double number) {
    constexpr std::uint64_t sign = std::uint64_t{1} << 63U;
    auto const bits = std::bit_cast<std::uint64_t>(number);
    return (bits & sign) != 0 ? ~bits : bits | sign;
}

/// A byte of a text as a sort sees it: case of ASCII letters is not regarded.
[[nodiscard]] constexpr unsigned char SortByteOf(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

} // namespace zelvar
