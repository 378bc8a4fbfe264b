#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>

namespace zelvar {

/// What a text that a person typed or pasted says as a number.
struct NumberReading {
    enum class State : std::uint8_t {
        Empty,    ///< nothing but blanks
        Number,   ///< `value` is finite
        TooLarge, ///< beyond the largest double; `value` is infinite, with the sign
        Partial,  ///< not a number yet: "-", "1e", "1,2,3"
        Refused,  ///< can never become one by typing on: letters, a second exponent, a sign in the middle
    };
    State state = State::Empty;
    double value = 0;

    friend bool operator==(NumberReading const &, NumberReading const &) = default;
};

/// Texts longer than this are refused, characters.
inline constexpr std::size_t kLongestNumber = 400;

/// Whatever the locale: the only point or comma is the decimal mark, so "1,234" is a little more than one. Where both
/// stand, the last is the decimal mark and the other one parts thousands; a mark that comes twice parts thousands, as
/// blanks and apostrophes do. Thousands are parted in threes or the text is no number. What is too small for a double
/// reads as zero.
[[nodiscard]] NumberReading ReadNumber(std::string_view text);

inline constexpr int kShortest = -1; ///< as many decimals as it takes to read the same double again

/// With a point, without thousands; very large and very small numbers with an exponent.
[[nodiscard]] DString WriteNumber(double value, int decimals = kShortest);
/// The number that `WriteNumber` shows.
[[nodiscard]] double RoundNumber(double value, int decimals);
/// `value + count * step` without the dust of binary fractions: three steps of 0.1 are 0.3.
[[nodiscard]] double StepNumber(double value, double step, double count);

} // namespace zelvar
