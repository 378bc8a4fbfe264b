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
    auto const same = [](char a, char wanted) { return ToLower(a) == wanted; };
    return std::search(text.begin(), text.end(), m_wanted.begin(), m_wanted.end(), same) != text.end() ||
           m_wanted.empty();
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
