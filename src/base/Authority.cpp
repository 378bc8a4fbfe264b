#include "zelvar/base/Authority.h"

#include "zelvar/base/DString.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

/// What ends an address in a line of text.
constexpr std::string_view kEnds = " \t\r\n\"<>";

bool IsNumber(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// The position of `escape` in the text between two positions, its letters in any case; the last one with `isLast`.
std::size_t FindEscape(std::string_view text, std::size_t from, std::size_t end, std::string_view escape, bool isLast) {
    std::size_t found = kNone;
    for (std::size_t i = from; i + escape.size() <= end && (isLast || found == kNone); ++i)
        if (text[i] == '%' && EqualNoCase(text.substr(i, escape.size()), escape))
            found = i;
    return found;
}

} // namespace

std::size_t LoginFinder::LastAtOfRun(std::size_t from) {
    if (from >= m_runEnd) {
        m_runEnd = std::min(m_text.find_first_of(kEnds, from), m_text.size());
        std::size_t const at = m_text.substr(0, m_runEnd).rfind('@');
        m_lastAt = at == kNone || at < from ? kNone : at;
    }
    return m_lastAt == kNone || m_lastAt < from ? kNone : m_lastAt;
}

std::optional<LoginInText> LoginFinder::Behind(std::size_t colon) {
    std::size_t const begin = colon + std::string_view("://").size();
    std::size_t const end = std::min(m_text.find_first_of("/?# \t\r\n\"<>", begin), m_text.size());
    std::string_view const authority = m_text.substr(begin, end - begin);
    std::size_t const password = authority.find(':');
    if (password == kNone)
        return std::nullopt;
    if (std::size_t const at = authority.rfind('@'); at != kNone)
        return password < at ? std::optional(LoginInText{begin, begin + password, begin + at}) : std::nullopt;
    if (authority.starts_with('[') || IsNumber(authority.substr(password + 1)))
        return std::nullopt;
    std::size_t const at = LastAtOfRun(end);
    return at == kNone ? std::nullopt : std::optional(LoginInText{begin, begin + password, at});
}

std::optional<LoginInText> LoginFinder::BehindEscaped(std::size_t percent) const {
    std::size_t const begin = percent + std::string_view("%3A%2F%2F").size();
    // The next such address has a "%2F": no byte is looked at for more than one of them.
    std::size_t const stop = std::min(FindEscape(m_text, begin, m_text.size(), "%2F", false), m_text.size());
    std::size_t const length = m_text.substr(begin, stop - begin).find_first_of("/?#& \t\r\n\"<>");
    std::size_t const end = length == kNone ? stop : begin + length;
    std::size_t const password = FindEscape(m_text, begin, end, "%3A", false);
    std::size_t const at = FindEscape(m_text, begin, end, "%40", true);
    if (password == kNone || at == kNone || password > at)
        return std::nullopt;
    return LoginInText{begin, password, at};
}

} // namespace zelvar
