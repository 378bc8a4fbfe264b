#include "zelvar/views/core/RowSelection.h"

#include <algorithm>

namespace zelvar {

unsigned RowSelection::State(int row) const {
    return (m_selected.Contains(row) ? LVIS_SELECTED : 0U) | (row >= 0 && row == m_focus ? LVIS_FOCUSED : 0U);
}

void RowSelection::SetRowCount(int count) {
    if (count < m_rowCount)
        m_selected.Remove(count, m_rowCount - 1);
    m_rowCount = count;
    if (m_focus >= count)
        m_focus = -1;
    if (m_anchor >= count)
        m_anchor = -1;
}

void RowSelection::SetState(int row, unsigned state, unsigned mask) {
    if (row < -1 || row >= m_rowCount)
        return;
    if (row == -1) {
        IntervalSet rows = m_selected;
        if ((mask & LVIS_SELECTED) != 0) {
            rows.Clear();
            if ((state & LVIS_SELECTED) != 0)
                rows.Insert(0, m_rowCount - 1);
        }
        Select(rows);
        if ((mask & ~state & LVIS_FOCUSED) != 0 && m_focus >= 0)
            SetState(m_focus, 0, LVIS_FOCUSED);
        return;
    }
    unsigned const oldState = State(row);
    unsigned const newState = (oldState & ~mask) | (state & mask);
    if (newState == oldState)
        return;
    std::vector<Change> changes;
    if ((newState & ~oldState & LVIS_SELECTED) != 0 && m_single) {
        m_selected.ForEachInterval([&](int first, int last) {
            for (int other = first; other <= last; ++other)
                changes.push_back({other, other, State(other), State(other) & ~LVIS_SELECTED});
        });
        m_selected.Clear();
    }
    if ((newState & ~oldState & LVIS_FOCUSED) != 0 && m_focus >= 0)
        changes.push_back({m_focus, m_focus, State(m_focus) | LVIS_FOCUSED, State(m_focus) & ~LVIS_FOCUSED});
    if ((newState & LVIS_FOCUSED) != 0)
        m_focus = row;
    else if ((oldState & LVIS_FOCUSED) != 0)
        m_focus = -1;
    if ((newState & LVIS_SELECTED) != 0)
        m_selected.Insert(row, row);
    else
        m_selected.Remove(row, row);
    changes.push_back({row, row, oldState, newState});
    Tell(changes);
}

void RowSelection::Select(IntervalSet const &rows, int focus) {
    IntervalSet wanted;
    rows.ForEachPiece(0, m_rowCount - 1, true, [&](int first, int last) {
        if (!m_single || wanted.IsEmpty())
            wanted.Insert(first, m_single ? first : last);
    });
    int const oldFocus = m_focus;
    int const newFocus = focus >= 0 && focus < m_rowCount ? focus : m_focus;

    // A piece breaks where the focus changes, since that row is told with both bits at once.
    std::vector<Change> changes;
    auto const note = [&](int first, int last, unsigned oldBit, unsigned newBit) {
        for (int row = first; row <= last;) {
            int end = last;
            for (int const breaks : {oldFocus, newFocus})
                if (breaks >= row && breaks <= last)
                    end = std::min(end, breaks == row ? row : breaks - 1);
            changes.push_back({row, end, oldBit | (row == oldFocus ? LVIS_FOCUSED : 0U),
                               newBit | (row == newFocus ? LVIS_FOCUSED : 0U)});
            row = end + 1;
        }
    };
    m_selected.ForEachInterval([&](int first, int last) {
        wanted.ForEachPiece(first, last, false, [&](int from, int to) { note(from, to, LVIS_SELECTED, 0); });
    });
    auto const focusOnly = [&](int row) {
        bool const selected = m_selected.Contains(row);
        if (row >= 0 && selected == wanted.Contains(row))
            note(row, row, selected ? LVIS_SELECTED : 0U, selected ? LVIS_SELECTED : 0U);
    };
    if (newFocus != oldFocus)
        focusOnly(oldFocus);
    wanted.ForEachInterval([&](int first, int last) {
        m_selected.ForEachPiece(first, last, false, [&](int from, int to) { note(from, to, 0, LVIS_SELECTED); });
    });
    if (newFocus != oldFocus)
        focusOnly(newFocus);

    m_selected = std::move(wanted);
    m_focus = newFocus;
    Tell(changes);
}

void RowSelection::Tell(std::vector<Change> const &changes) {
    for (Change const &change : changes) {
        if (m_tellsRanges && change.last > change.first) {
            m_listener.RangeStateChanged(change.first, change.last, change.oldState, change.newState);
            continue;
        }
        for (int row = change.first; row <= change.last; ++row)
            m_listener.RowStateChanged(row, change.oldState, change.newState);
    }
}

void RowSelection::SelectOnly(int row) {
    IntervalSet rows;
    rows.Insert(row, row);
    SetAnchor(row);
    Select(rows, row);
}

void RowSelection::InsertRows(int at, int count) {
    m_selected.InsertRows(at, count);
    m_rowCount += count;
    if (m_focus >= at)
        m_focus += count;
    if (m_anchor >= at)
        m_anchor += count;
}

void RowSelection::RemoveRows(int at, int count) {
    m_selected.RemoveRows(at, count);
    m_rowCount -= count;
    // The keyboard goes on with the row that has taken the place.
    auto const follow = [&](int &row) {
        if (row >= at + count)
            row -= count;
        else if (row >= at)
            row = std::min(at, m_rowCount - 1);
    };
    follow(m_focus);
    follow(m_anchor);
}

void RowSelection::Reorder(std::vector<int> const &newRows) {
    IntervalSet moved;
    m_selected.ForEachInterval([&](int first, int last) {
        for (int row = first; row <= last; ++row)
            moved.Insert(newRows[static_cast<std::size_t>(row)], newRows[static_cast<std::size_t>(row)]);
    });
    m_selected = std::move(moved);
    for (int *const row : {&m_focus, &m_anchor})
        if (*row >= 0)
            *row = newRows[static_cast<std::size_t>(*row)];
}

} // namespace zelvar
