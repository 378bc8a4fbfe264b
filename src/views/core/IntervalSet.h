#pragma once

#include <map>

namespace zelvar {

/// Set of row numbers kept as intervals: what is selected among millions of rows costs as much as its number of pieces.
/// Every bound is inclusive; a range whose last row lies before its first is empty.
class IntervalSet {
public:
    [[nodiscard]] bool Contains(int row) const;
    [[nodiscard]] int Count() const { return m_count; }
    [[nodiscard]] bool IsEmpty() const { return m_count == 0; }
    /// The first member that is `row` or behind it, -1 for none.
    [[nodiscard]] int NextFrom(int row) const;

    void Insert(int first, int last);
    void Remove(int first, int last);
    void Clear();

    /// Rows come in: members from `at` on move up by `count`; the new rows are no members.
    void InsertRows(int at, int count);
    /// Rows go: members among them vanish, those behind move down.
    void RemoveRows(int at, int count);

    /// Calls `visit(first, last)` for each piece, ascending.
    template <class Visit>
    void ForEachInterval(Visit &&visit) const {
        for (auto const &[first, last] : m_intervals)
            visit(first, last);
    }
    /// Calls `visit(first, last)` for each piece of the range whose rows are (`members`) or are not in the set.
    template <class Visit>
    void ForEachPiece(int first, int last, bool members, Visit &&visit) const;

private:
    using Intervals = std::map<int, int>; ///< first to last; neither overlapping nor touching

    /// The interval that holds `row` or, without one, the next behind it.
    [[nodiscard]] Intervals::const_iterator At(int row) const;

    Intervals m_intervals;
    int m_count = 0;
};

template <class Visit>
void IntervalSet::ForEachPiece(int first, int last, bool members, Visit &&visit) const {
    int next = first; // rows before it are dealt with
    for (auto at = At(first); at != m_intervals.end() && at->first <= last; ++at) {
        int const from = at->first > first ? at->first : first;
        int const to = at->second < last ? at->second : last;
        if (members)
            visit(from, to);
        else if (from > next)
            visit(next, from - 1);
        next = to + 1;
    }
    if (!members && next <= last)
        visit(next, last);
}

} // namespace zelvar
