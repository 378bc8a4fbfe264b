#include "zelvar/data/tables/OpenTable.h"

namespace zelvar {

bool OpenTable::StepCounted() {
    if (m_next == m_end)
        return false;
    if (Step()) {
        ++m_next;
        return true;
    }
    if (!HasFailed())
        m_end = m_next;
    return false;
}

bool OpenTable::GoTo(std::int64_t row) {
    if (row < m_next)
        m_next = GoBack(row);
    while (m_next < row) {
        if (IsStopped())
            return false;
        if (!StepCounted())
            break;
    }
    return m_next == row || !HasFailed() || Fail();
}

/// The next reading begins anew.
bool OpenTable::Fail() {
    m_next = GoBack(0);
    return false;
}

bool OpenTable::ReadRows(std::int64_t first, int most, ADIRows &rows) {
    rows = {};
    rows.first = first;
    rows.isEnd = m_end >= 0 && first >= m_end;
    if (rows.isEnd)
        return true;
    if (!GoTo(first))
        return false;
    while (m_next == first + rows.count && rows.count < most && rows.texts.size() < ADIDriver::kBatchBytes &&
           rows.ends.size() < ADIDriver::kBatchCells) {
        if (IsStopped())
            return false;
        if (!StepCounted()) {
            if (HasFailed())
                return Fail();
            break;
        }
        std::size_t const cells = rows.ends.size();
        std::size_t const bytes = rows.texts.size();
        if (!Append(rows)) {
            Report::TraceMessage(Report::kTraceOpen, "row %lld is too long: the table ends before it",
                                 static_cast<long long>(m_next));
            rows.ends.resize(cells);
            rows.texts.resize(bytes);
            m_end = m_next - 1;
            break;
        }
        ++rows.count;
    }
    rows.isEnd = m_end >= 0 && first + rows.count >= m_end;
    return true;
}

} // namespace zelvar
