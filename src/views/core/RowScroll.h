#pragma once

#include "zelvar/views/core/RowGeometry.h"

namespace zelvar {

/// What the vertical scroll bar of a list counts, for a window of `height` pixels. Without groups it counts rows, so
/// that any number of them has a bar and a whole row stands on top; with groups it counts pixels.
class RowScroll {
public:
    RowScroll(RowGeometry const &geometry, int height) : m_geometry(geometry), m_height(height) {}

    [[nodiscard]] int Step() const;
    [[nodiscard]] int Page() const;                                                     ///< at least 1
    [[nodiscard]] int Last() const;                                                     ///< the bar's greatest value
    [[nodiscard]] int RowsPerPage() const { return m_height / m_geometry.RowHeight(); } ///< those wholly seen

    /// Pixels of the content above the window.
    [[nodiscard]] std::int64_t ContentTop(int value) const;
    /// The nearest value with which the row at `position` is wholly seen, below its header if it is a group's first.
    [[nodiscard]] int ValueToShow(int position, int value) const;

private:
    RowGeometry const &m_geometry;
    int m_height;
};

} // namespace zelvar
