#include "zelvar/views/core/IntervalSet.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

IntervalSet::Intervals::const_iterator IntervalSet::At(int row) const {
    auto at = m_intervals.upper_bound(row);
    if (at != m_intervals.begin() && std::prev(at)->second >= row)
        --at;
    return at;
}

bool IntervalSet::Contains(int row) const {
    auto const at = At(row);
    return at != m_intervals.end() && at->first <= row;
}

int IntervalSet::NextFrom(int row) const {
    auto const at = At(row);
    return at == m_intervals.end() ? -1 : std::max(at->first, row);
}

void IntervalSet::Insert(int first, int last) {
    if (last < first)
        return;
    // Whatever overlaps or touches the range melts into it.
    auto at = At(first > 0 ? first - 1 : first);
    while (at != m_intervals.end() && at->first - 1 <= last) {
        first = std::min(first, at->first);
        last = std::max(last, at->second);
        m_count -= at->second - at->first + 1;
        at = m_intervals.erase(at);
    }
    m_intervals.emplace_hint(at, first, last);
    m_count += last - first + 1;
}

void IntervalSet::Remove(int first, int last) {
    auto at = At(first);
    while (at != m_intervals.end() && at->first <= last && first <= last) {
        auto const [oldFirst, oldLast] = *at;
        m_count -= oldLast - oldFirst + 1;
        at = m_intervals.erase(at);
        if (oldFirst < first) {
            m_intervals.emplace_hint(at, oldFirst, first - 1);
            m_count += first - oldFirst;
        }
        if (oldLast > last) {
            at = m_intervals.emplace_hint(at, last + 1, oldLast);
            m_count += oldLast - last;
        }
    }
}

void IntervalSet::Clear() {
    m_intervals.clear();
    m_count = 0;
}

void IntervalSet::InsertRows(int at, int count) {
    if (count <= 0)
        return;
    Intervals moved;
    auto from = At(at);
    if (from != m_intervals.end() && from->first < at) {
        auto const [first, last] = *from;
        from = m_intervals.erase(from);
        m_intervals.emplace_hint(from, first, at - 1);
        moved.emplace(at + count, last + count);
    }
    for (auto i = from; i != m_intervals.end(); i = m_intervals.erase(i))
        moved.emplace_hint(moved.end(), i->first + count, i->second + count);
    m_intervals.merge(moved);
}

void IntervalSet::RemoveRows(int at, int count) {
    if (count <= 0)
        return;
    Remove(at, at + count - 1);
    Intervals moved;
    for (auto i = m_intervals.lower_bound(at); i != m_intervals.end(); i = m_intervals.erase(i))
        moved.emplace_hint(moved.end(), i->first - count, i->second - count);
    // The pieces on both sides of the gap may touch now.
    for (auto const &[first, last] : moved) {
        auto before = m_intervals.empty() ? m_intervals.end() : std::prev(m_intervals.end());
        if (before != m_intervals.end() && before->second + 1 == first)
            before->second = last;
        else
            m_intervals.emplace_hint(m_intervals.end(), first, last);
    }
}

} // namespace zelvar
