#include "zelvar/views/core/RowScroll.h"

#include <algorithm>

namespace zelvar {

int RowScroll::Step() const { return m_geometry.IsGrouped() ? m_geometry.RowHeight() : 1; }

int RowScroll::Page() const { return std::max(m_geometry.IsGrouped() ? m_height : RowsPerPage(), 1); }

int RowScroll::Last() const {
    int const page = m_geometry.IsGrouped() ? m_height : RowsPerPage();
    int const all = m_geometry.IsGrouped() ? static_cast<int>(m_geometry.ContentHeight()) : m_geometry.RowCount();
    return std::max(0, all - page);
}

std::int64_t RowScroll::ContentTop(int value) const {
    return m_geometry.IsGrouped() ? value : m_geometry.PositionTop(value);
}

int RowScroll::ValueToShow(int position, int value) const {
    if (!m_geometry.IsGrouped())
        return std::clamp(value, position - Page() + 1, position);
    int top = static_cast<int>(m_geometry.PositionTop(position));
    int const bottom = top + m_geometry.RowHeight();
    for (RowGeometry::Span const &span : m_geometry.Spans())
        if (span.firstPosition == position)
            top = static_cast<int>(span.headerTop);
    return std::min(std::max(value, bottom - m_height), top);
}

} // namespace zelvar
