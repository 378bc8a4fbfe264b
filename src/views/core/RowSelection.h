#pragma once

#include "zelvar/views/core/IntervalSet.h"
#include "zelvar/views/core/ListViewNumbers.h"

#include <vector>

namespace zelvar {

/// Which rows of a list are selected, which one has the focus, where a range begins; and who is told of each change.
///
/// A listener may change the selection again while it is told: what it hears of has already happened.
class RowSelection {
public:
    class Listener {
    public:
        virtual void RowStateChanged(int row, unsigned oldState, unsigned newState) = 0;
        /// Rows `first` to `last`, all of them from the one state to the other.
        virtual void RangeStateChanged(int first, int last, unsigned oldState, unsigned newState) = 0;

    protected:
        Listener() = default;
        Listener(Listener const &) = default;
        Listener &operator=(Listener const &) = default;
        ~Listener() = default;
    };

    explicit RowSelection(Listener &listener) : m_listener(listener) {}

    /// At most one row is selected from now on; what is selected now stays.
    void SetSingle(bool single) { m_single = single; }
    [[nodiscard]] bool IsSingle() const { return m_single; }
    /// A range that changes as a whole is told at once instead of row by row.
    void SetTellsRanges(bool tells) { m_tellsRanges = tells; }

    [[nodiscard]] IntervalSet const &Selected() const { return m_selected; }
    [[nodiscard]] unsigned State(int row) const;
    [[nodiscard]] int Focus() const { return m_focus; }   ///< -1 for none
    [[nodiscard]] int Anchor() const { return m_anchor; } ///< where a range begins, -1 for none
    void SetAnchor(int row) { m_anchor = row; }
    /// Rows that can hold a state; those beyond lose theirs without a word.
    void SetRowCount(int count);
    [[nodiscard]] int RowCount() const { return m_rowCount; }

    /// The bits of `mask` become those of `state`; -1 for `row` means every row.
    void SetState(int row, unsigned state, unsigned mask);
    /// Exactly these rows are selected afterwards; with `focus` of 0 or more that row has the focus. With single
    /// selection only the first of them counts.
    void Select(IntervalSet const &rows, int focus = -1);
    /// As a click does: the row has the focus too, and a range begins there.
    void SelectOnly(int row);

    // The rows themselves come, go and change places; states go with them, nobody is told.
    void InsertRows(int at, int count);
    void RemoveRows(int at, int count);
    /// `newRows[old]` is where row `old` has gone.
    void Reorder(std::vector<int> const &newRows);

private:
    struct Change {
        int first = 0;
        int last = 0;
        unsigned oldState = 0;
        unsigned newState = 0;
    };
    void Tell(std::vector<Change> const &changes);

    Listener &m_listener; ///< not owned
    IntervalSet m_selected;
    int m_focus = -1;
    int m_anchor = -1;
    int m_rowCount = 0;
    bool m_single = false;
    bool m_tellsRanges = false;
};

} // namespace zelvar
