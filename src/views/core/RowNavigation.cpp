#include "zelvar/views/core/RowNavigation.h"

#include <algorithm>

namespace zelvar {

int RowNavigation::FocusPosition() const {
    int const focus = m_selection.Focus();
    return focus < 0 ? -1 : m_geometry.PositionOfRow(focus);
}

IntervalSet RowNavigation::RangeTo(int row) const {
    auto const [first, last] =
        std::minmax({m_geometry.PositionOfRow(m_selection.Anchor()), m_geometry.PositionOfRow(row)});
    IntervalSet rows;
    if (!m_geometry.IsGrouped())
        rows.Insert(first, last);
    for (int position = first; m_geometry.IsGrouped() && position <= last; ++position)
        rows.Insert(m_geometry.RowAtPosition(position), m_geometry.RowAtPosition(position));
    return rows;
}

void RowNavigation::Press(int row, HeldKeys keys, Button button) {
    bool const selects = button == Button::Select;
    bool const selected = m_selection.Selected().Contains(row);
    if (!selects && selected) {
        // The menu is for the whole selection.
        m_selection.SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    } else if (selects && keys.shift && !m_selection.IsSingle()) {
        if (!HasRow(m_selection.Anchor()))
            m_selection.SetAnchor(std::max(m_selection.Focus(), 0));
        IntervalSet rows = RangeTo(row);
        if (keys.ctrl)
            m_selection.Selected().ForEachInterval([&rows](int first, int last) { rows.Insert(first, last); });
        m_selection.Select(rows, row);
    } else if (selects && keys.ctrl) {
        m_selection.SetAnchor(row);
        m_selection.SetState(row, LVIS_FOCUSED | (selected ? 0U : LVIS_SELECTED), LVIS_FOCUSED | LVIS_SELECTED);
    } else {
        m_selection.SelectOnly(row);
    }
}

std::optional<int> RowNavigation::Target(Step step, int page) const {
    int const last = m_geometry.RowCount() - 1;
    if (last < 0)
        return std::nullopt;
    int const at = FocusPosition();
    if (m_geometry.IsTiled() && at >= 0) {
        int const lines = std::max(page / m_geometry.PerLine(), 1);
        if (step == Step::Up || step == Step::PageUp)
            return TargetAmongTiles(step == Step::Up ? -1 : -lines);
        if (step == Step::Down || step == Step::PageDown)
            return TargetAmongTiles(step == Step::Down ? 1 : lines);
    }
    switch (step) {
    case Step::Before:
        return std::max(at - 1, 0);
    case Step::Behind:
        return std::min(at + 1, last);
    case Step::Up:
        return std::max(at - 1, 0);
    case Step::Down:
        return std::min(at + 1, last);
    case Step::PageUp:
        return std::max(at - page, 0);
    case Step::PageDown:
        return std::min(std::max(at, 0) + page, last);
    case Step::First:
        return 0;
    case Step::Last:
        return last;
    }
    return std::nullopt;
}

/// So many lines further down.
int RowNavigation::TargetAmongTiles(int lines) const {
    int const perLine = m_geometry.PerLine();
    int const last = m_geometry.RowCount() - 1;
    int const at = FocusPosition();
    int const line = std::clamp(at / perLine + lines, 0, last / perLine);
    return std::min(line * perLine + at % perLine, last);
}

void RowNavigation::MoveTo(int position, HeldKeys keys) {
    int const row = m_geometry.RowAtPosition(position);
    if (keys.shift && !m_selection.IsSingle())
        Press(row, keys, Button::Select);
    else if (keys.ctrl && !m_selection.IsSingle())
        m_selection.SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    else
        m_selection.SelectOnly(row);
}

int RowNavigation::SearchStart(bool wordGrows) const {
    return wordGrows ? std::max(FocusPosition(), 0) : FocusPosition() + 1;
}

} // namespace zelvar
