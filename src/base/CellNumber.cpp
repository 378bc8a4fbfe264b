#include "zelvar/base/CellNumber.h"

#include "zelvar/base/DString.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace zelvar {

namespace {

constexpr std::size_t kNumberBytes = 512; // more digits change nothing

bool TakePrefix(std::string_view &text, std::string_view prefix) {
    bool const found = text.starts_with(prefix);
    if (found)
        text.remove_prefix(prefix.size());
    return found;
}

/// Whether the text begins with letters that begin no number: most texts do, and this costs less than to read them.
bool BeginsLikeWord(std::string_view text) {
    auto const lower = [&](std::size_t at) { return at < text.size() ? text[at] | 0x20 : 0; };
    bool const isLetter = lower(0) >= 'a' && lower(0) <= 'z';
    bool const isNumber = (lower(0) == 'i' && lower(1) == 'n') || (lower(0) == 'n' && lower(1) == 'a');
    return isLetter && !isNumber;
}

} // namespace

std::optional<double> ParseCellNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    bool const negative = TakePrefix(text, "-");
    if (!negative)
        TakePrefix(text, "+");
    if (text.starts_with('-') || text.starts_with('+') || BeginsLikeWord(text))
        return std::nullopt;
    std::string_view digits = text;
    bool const hexadecimal = TakePrefix(digits, "0x") || TakePrefix(digits, "0X");
    double value = 0;
    auto read = hexadecimal
                    ? std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::hex)
                    : std::from_chars(text.data(), text.data() + text.size(), value);
    if (hexadecimal && read.ec == std::errc::invalid_argument)
        value = 0; // "0x" and no more: the 0
    else if (read.ec == std::errc::invalid_argument)
        return std::nullopt;
    if (read.ec == std::errc::result_out_of_range) {
        std::string_view const used(text.data(), static_cast<std::size_t>(read.ptr - text.data()));
        bool const tiny = used.find("e-") != std::string_view::npos || used.find("E-") != std::string_view::npos;
        value = tiny ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -value : value;
}

double SortNumberOf(std::string_view text) {
    std::string_view const begin = text.substr(0, kNumberBytes);
    double const number = ParseCellNumber(begin).value_or(0);
    if (std::isfinite(number))
        return number;
    // "Nantes" and "Information" are no numbers.
    std::string_view word = begin.substr(begin.find_first_not_of(" \t\n\v\f\r"));
    word.remove_prefix(word.front() == '-' || word.front() == '+' ? 1 : 0);
    word = word.substr(0, word.find_last_not_of(" \t\n\v\f\r") + 1);
    bool const isDigit = (word.front() >= '0' && word.front() <= '9') || word.front() == '.';
    return isDigit || EqualNoCase(word, "inf") || EqualNoCase(word, "infinity") ? number : 0;
}

} // namespace zelvar
