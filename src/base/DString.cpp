#include "zelvar/base/DString.h"

#include "zelvar/base/CaseFolding.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD"; // U+FFFD

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

/// True if the texts agree up to the end of `start`; `rest` then is what follows in `text`.
bool CutStartNoCase(std::string_view text, std::string_view start, std::string_view &rest) {
    while (!start.empty()) {
        if (text.empty())
            return false;
        if (IsAscii(text.front()) && IsAscii(start.front())) {
            if (UpperAscii(static_cast<unsigned char>(text.front())) !=
                UpperAscii(static_cast<unsigned char>(start.front())))
                return false;
            text.remove_prefix(1);
            start.remove_prefix(1);
            continue;
        }
        FoldedChar const a = FoldFirst(text);
        FoldedChar const b = FoldFirst(start);
        if (a.length != b.length || std::memcmp(a.bytes, b.bytes, a.length) != 0)
            return false;
        text.remove_prefix(a.length);
        start.remove_prefix(b.length);
    }
    rest = text;
    return true;
}

} // namespace

DString Format(char const *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    DString text = FormatV(format, arguments);
    va_end(arguments);
    return text;
}

DString FormatV(char const *format, std::va_list arguments) {
    std::array<char, 512> buffer{};
    std::va_list again;
    va_copy(again, arguments);
    int const length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    DString text;
    if (length > 0 && static_cast<std::size_t>(length) < buffer.size()) {
        text.assign(buffer.data(), static_cast<std::size_t>(length));
    } else if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    std::string_view rest;
    return a.size() == b.size() && CutStartNoCase(a, b, rest) && rest.empty();
}

bool StartsWithNoCase(std::string_view text, std::string_view start) {
    std::string_view rest;
    return CutStartNoCase(text, start, rest);
}

DString FoldCase(std::string_view text) {
    DString folded;
    folded.reserve(text.size());
    while (!text.empty()) {
        if (IsAscii(text.front())) {
            folded.push_back(static_cast<char>(UpperAscii(static_cast<unsigned char>(text.front()))));
            text.remove_prefix(1);
            continue;
        }
        FoldedChar const c = FoldFirst(text);
        for (std::size_t i = 0; i < c.length; ++i)
            folded.push_back(static_cast<char>(c.bytes[i]));
        text.remove_prefix(c.length);
    }
    return folded;
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<DString> Split(std::string_view text, char separator) {
    std::vector<DString> pieces;
    for (std::size_t start = 0;;) {
        std::size_t const end = text.find(separator, start);
        pieces.emplace_back(text.substr(start, end == std::string_view::npos ? end : end - start));
        if (end == std::string_view::npos)
            return pieces;
        start = end + 1;
    }
}

DString JoinNotEmpty(std::vector<DString> const &pieces, char separator) {
    DString joined;
    for (DString const &piece : pieces) {
        if (piece.empty())
            continue;
        if (!joined.empty())
            joined += separator;
        joined += piece;
    }
    return joined;
}

DString FormatDouble(double value, int decimals) {
    if (!std::isfinite(value))
        return std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
    std::array<char, 512> buffer{}; // the longest finite number has 309 digits before the point
    int const digits = std::clamp(decimals, 0, 100);
    auto const [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    return error == std::errc{} ? DString(buffer.data(), end) : DString();
}

DString ToValidUtf8(std::string_view bytes) {
    DString valid;
    valid.reserve(bytes.size());
    while (!bytes.empty()) {
        unsigned const length = Utf8Length(bytes);
        valid.append(length == 0 ? kReplacement : bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

} // namespace zelvar
