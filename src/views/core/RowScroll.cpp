#include "zelvar/views/core/RowScroll.h"

#include <algorithm>

namespace zelvar {

std::int64_t RowScroll::Unit() const {
    constexpr std::int64_t kMost = std::int64_t{1} << 30U;
    return m_geometry.ContentHeight() / kMost + 1;
}

int RowScroll::Step() const {
    constexpr int kStepsOfTile = 3; // which are a turn of the wheel by one notch
    if (m_geometry.IsTiled())
        return static_cast<int>(std::max<std::int64_t>(m_geometry.LineHeight() / kStepsOfTile / Unit(), 1));
    return m_geometry.IsGrouped() ? m_geometry.RowHeight() : 1;
}

int RowScroll::Page() const {
    return static_cast<int>(std::max<std::int64_t>(CountsRows() ? RowsPerPage() : m_height / Unit(), 1));
}

int RowScroll::Last() const {
    if (CountsRows())
        return std::max(0, m_geometry.RowCount() - RowsPerPage());
    std::int64_t const hidden = std::max<std::int64_t>(m_geometry.ContentHeight() - m_height, 0);
    return static_cast<int>((hidden + Unit() - 1) / Unit());
}

std::int64_t RowScroll::ContentTop(int value) const {
    return CountsRows() ? m_geometry.PositionTop(value) : value * Unit();
}

int RowScroll::ValueToShow(int position, int value) const {
    if (CountsRows())
        return std::clamp(value, position - Page() + 1, position);
    std::int64_t top = m_geometry.PositionTop(position);
    std::int64_t const bottom = top + m_geometry.LineHeight();
    for (RowGeometry::Span const &span : m_geometry.Spans())
        if (span.firstPosition == position)
            top = span.headerTop;
    std::int64_t const least = (std::max<std::int64_t>(bottom - m_height, 0) + Unit() - 1) / Unit();
    return static_cast<int>(std::min(std::max<std::int64_t>(value, least), top / Unit()));
}

} // namespace zelvar
