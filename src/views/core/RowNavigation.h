#pragma once

#include "zelvar/views/core/RowGeometry.h"
#include "zelvar/views/core/RowSelection.h"

#include <optional>

namespace zelvar {

/// Keys that are held while a row is pressed or the focus moves.
struct HeldKeys {
    bool ctrl = false;
    bool shift = false;
};

/// What presses and steps mean for the selection of a list. Rows follow each other as they are seen.
class RowNavigation {
public:
    enum class Button { Select, Menu };
    enum class Step { Up, Down, PageUp, PageDown, First, Last, Before, Behind };

    RowNavigation(RowSelection &selection, RowGeometry const &geometry)
        : m_selection(selection), m_geometry(geometry) {}

    void Press(int row, HeldKeys keys, Button button);
    /// The position that a step leads to from the focus, the page being `page` rows; nothing in an empty list. Among
    /// tiles up and down stay in their column, but for the last line where it does not reach that far, and the page is
    /// that of whole lines.
    [[nodiscard]] std::optional<int> Target(Step step, int page) const;
    /// The focus goes to the row at `position` and takes the selection along, as far as the keys want it.
    void MoveTo(int position, HeldKeys keys);
    /// Where a search by first letters begins: a word that grows may stay on its row.
    [[nodiscard]] int SearchStart(bool wordGrows) const;

private:
    [[nodiscard]] int FocusPosition() const; ///< -1 for no focus
    [[nodiscard]] int TargetAmongTiles(int lines) const;
    [[nodiscard]] bool HasRow(int row) const { return row >= 0 && row < m_selection.RowCount(); }
    [[nodiscard]] IntervalSet RangeTo(int row) const; ///< from the row where ranges begin, which must be there

    RowSelection &m_selection;
    RowGeometry const &m_geometry;
};

} // namespace zelvar
