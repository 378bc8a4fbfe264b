#include "zelvar/dialogs/core/FilterFindRules.h"

#include <algorithm>
#include <cstdlib>

namespace zelvar {

namespace {

constexpr int kLeastHeight = 11; // pixels of list and description
constexpr int kGrip = 4;         // pixels from the edge, not included

constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

} // namespace

AsciiCaseFinder::AsciiCaseFinder(std::string_view wanted) : m_wanted(wanted) {
    std::transform(m_wanted.begin(), m_wanted.end(), m_wanted.begin(), ToLower);
}

bool AsciiCaseFinder::IsIn(std::string_view text) const {
    if (m_wanted.empty())
        return true;
    if (text.size() < m_wanted.size())
        return false;
    // The first character is looked for in both of its cases; most often it is in none.
    char const first = m_wanted.front();
    char const upper = first >= 'a' && first <= 'z' ? static_cast<char>(first - 'a' + 'A') : first;
    std::size_t const places = text.size() - m_wanted.size() + 1;
    std::string_view const starts = text.substr(0, places);
    std::size_t atFirst = starts.find(first);
    std::size_t atUpper = upper == first ? DString::npos : starts.find(upper);
    for (std::size_t at = std::min(atFirst, atUpper); at != DString::npos; at = std::min(atFirst, atUpper)) {
        std::size_t same = 1;
        while (same < m_wanted.size() && ToLower(text[at + same]) == m_wanted[same])
            ++same;
        if (same == m_wanted.size())
            return true;
        if (at == atFirst)
            atFirst = starts.find(first, at + 1);
        else
            atUpper = starts.find(upper, at + 1);
    }
    return false;
}

std::optional<ListAndDescription> DragBoundary(ListAndDescription const &places, int y) {
    int const by = y - places.list.bottom;
    ListAndDescription moved = places;
    moved.list.bottom = y;
    moved.text.top += by;
    moved.frame.top += by;
    if (by == 0 || moved.text.Height() < kLeastHeight || moved.list.Height() < kLeastHeight)
        return std::nullopt;
    return moved;
}

bool IsOnBoundary(int y, int listHeight) { return std::abs(listHeight - y) < kGrip; }

} // namespace zelvar
