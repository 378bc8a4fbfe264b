#include "zelvar/controls/core/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace zelvar {

namespace {

using State = NumberReading::State;

constexpr double kLargestFixed = 1e15; // from here on digits behind the point mean nothing
constexpr double kSmallestFixed = 1e-5;
constexpr int kMostDecimals = 17;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool AreDigits(std::string_view text) { return std::all_of(text.begin(), text.end(), IsDigit); }

/// Signs and blanks of typesetters as those of a keyboard.
DString Keyboarded(std::string_view text) {
    struct Sign {
        std::string_view bytes;
        char plain;
    };
    static constexpr std::array<Sign, 6> signs{
        {{"\u00A0", ' '}, {"\u2009", ' '}, {"\u202F", ' '}, {"\u2028", ' '}, {"\u2019", '\''}, {"\u2212", '-'}}};
    DString plain;
    while (!text.empty()) {
        auto const *const sign = std::find_if(signs.begin(), signs.end(),
                                              [&](Sign const &candidate) { return text.starts_with(candidate.bytes); });
        plain += sign == signs.end() ? text.front() : sign->plain;
        text.remove_prefix(sign == signs.end() ? 1 : sign->bytes.size());
    }
    return plain;
}

bool IsRefused(std::string_view text) {
    if (text.size() > kLongestNumber || text.find_first_not_of("0123456789+-.,eE '") != std::string_view::npos)
        return true;
    std::size_t const exponent = text.find_first_of("eE");
    if (exponent != std::string_view::npos && text.find_first_of("eE", exponent + 1) != std::string_view::npos)
        return true;
    for (std::size_t i = 1; i < text.size(); ++i)
        if ((text[i] == '+' || text[i] == '-') && i != exponent + 1)
            return true;
    return false;
}

/// The integer part's digits; nothing if it is not parted in threes by one sign.
std::optional<DString> WithoutThousands(std::string_view text) {
    std::size_t const first = text.find_first_of(" '.,");
    if (first == std::string_view::npos)
        return DString(text);
    if (first == 0 || first > 3)
        return std::nullopt;
    std::vector<DString> const groups = Split(text, text[first]);
    for (std::size_t i = 0; i < groups.size(); ++i)
        if (!AreDigits(groups[i]) || (i > 0 && groups[i].size() != 3))
            return std::nullopt;
    DString digits;
    for (DString const &group : groups)
        digits += group;
    return digits;
}

/// Digits with at most one point.
std::optional<DString> PlainMantissa(std::string_view text) {
    auto const points = std::count(text.begin(), text.end(), '.');
    auto const commas = std::count(text.begin(), text.end(), ',');
    std::size_t mark = text.find_last_of(".,");
    if (points + commas > 1 && (points == 0 || commas == 0))
        mark = std::string_view::npos; // they part thousands
    std::optional<DString> const whole = WithoutThousands(text.substr(0, mark));
    std::string_view const fraction = mark == std::string_view::npos ? std::string_view() : text.substr(mark + 1);
    if (!whole || !AreDigits(fraction))
        return std::nullopt;
    if (whole->empty() && fraction.empty())
        return std::nullopt;
    return fraction.empty() ? *whole : *whole + '.' + DString(fraction);
}

/// Whether a number that no double holds is too large rather than too small.
bool IsLarge(std::string_view mantissa, std::string_view exponent) {
    constexpr long long farExponent = 1'000'000;
    bool const negative = exponent.starts_with('-');
    if (negative || exponent.starts_with('+'))
        exponent.remove_prefix(1);
    long long power = 0;
    for (char const digit : exponent)
        power = std::min(farExponent, power * 10 + (digit - '0'));
    auto const point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
    auto const first = static_cast<long long>(std::min(mantissa.find_first_of("123456789"), mantissa.size()));
    return point - first + (negative ? -power : power) > 0;
}

int DecimalsOf(double value) {
    DString const text = WriteNumber(value);
    std::size_t const point = text.find('.');
    if (text.find('e') != std::string_view::npos)
        return kMostDecimals + 1;
    return point == std::string_view::npos ? 0 : static_cast<int>(text.size() - point - 1);
}

} // namespace

NumberReading ReadNumber(std::string_view text) {
    DString const keyboarded = text.size() > 4 * kLongestNumber ? DString(text) : Keyboarded(text);
    std::string_view rest = Trimmed(keyboarded);
    if (rest.empty())
        return {};
    if (IsRefused(rest))
        return {.state = State::Refused};
    bool const negative = rest.front() == '-';
    if (negative || rest.front() == '+')
        rest.remove_prefix(1);
    std::size_t const mark = rest.find_first_of("eE");
    std::string_view const exponent = mark == std::string_view::npos ? std::string_view("0") : rest.substr(mark + 1);
    std::optional<DString> const mantissa = PlainMantissa(rest.substr(0, mark));
    std::string_view const power =
        exponent.starts_with('+') || exponent.starts_with('-') ? exponent.substr(1) : exponent;
    if (!mantissa || power.empty() || !AreDigits(power))
        return {.state = State::Partial};
    DString const number = *mantissa + 'e' + DString(exponent.starts_with('+') ? power : exponent);
    double value = 0;
    auto const result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        bool const large = IsLarge(*mantissa, exponent);
        value = large ? std::numeric_limits<double>::infinity() : 0;
        return {.state = large ? State::TooLarge : State::Number, .value = negative ? -value : value};
    }
    return {.state = State::Number, .value = negative ? -value : value};
}

DString WriteNumber(double value, int decimals) {
    std::array<char, 400> text{};
    double const size = std::abs(value);
    bool const fixed = size < kLargestFixed && (size >= kSmallestFixed || size == 0);
    auto const format = fixed ? std::chars_format::fixed : std::chars_format::scientific;
    bool const rounded = decimals >= 0 && size < kLargestFixed;
    auto const end = rounded ? std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed,
                                             std::min(decimals, kMostDecimals))
                             : std::to_chars(text.data(), text.data() + text.size(), value, format);
    DString written(text.data(), end.ptr);
    if (rounded && written.find_first_of("123456789") == std::string_view::npos && written.starts_with('-'))
        written.erase(0, 1); // no sign before what is shown as zero
    return written;
}

double RoundNumber(double value, int decimals) {
    return decimals < 0 ? value : ReadNumber(WriteNumber(value, decimals)).value;
}

double StepNumber(double value, double step, double count) {
    double const sum = value + count * step;
    int const decimals = std::max(DecimalsOf(value), DecimalsOf(step));
    return decimals > kMostDecimals || !std::isfinite(sum) ? sum : RoundNumber(sum, decimals);
}

} // namespace zelvar
