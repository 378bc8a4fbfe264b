#pragma once

#include "zelvar/views/core/RowGeometry.h"

namespace zelvar {

/// What the vertical scroll bar of a list counts, for a window of `height` pixels. Without groups it counts rows, so
/// that any number of them has a bar and a whole row stands on top; with groups it counts pixels, and so it does with
/// tiles, or several at a time where there are more pixels than a bar can count.
class RowScroll {
public:
    RowScroll(RowGeometry const &geometry, int height) : m_geometry(geometry), m_height(height) {}

    [[nodiscard]] int Step() const;
    [[nodiscard]] int Page() const; ///< at least 1
    [[nodiscard]] int Last() const; ///< the bar's greatest value
    /// Those wholly seen.
    [[nodiscard]] int RowsPerPage() const { return m_height / m_geometry.LineHeight() * m_geometry.PerLine(); }

    /// Pixels of the content above the window.
    [[nodiscard]] std::int64_t ContentTop(int value) const;
    /// The nearest value with which the row at `position` is wholly seen, below its header if it is a group's first.
    [[nodiscard]] int ValueToShow(int position, int value) const;

private:
    [[nodiscard]] bool CountsRows() const { return !m_geometry.IsGrouped() && !m_geometry.IsTiled(); }
    [[nodiscard]] std::int64_t Unit() const; ///< pixels of one count

    RowGeometry const &m_geometry;
    int m_height;
};

} // namespace zelvar
