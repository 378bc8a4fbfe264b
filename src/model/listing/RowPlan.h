#pragma once

#include "zelvar/base/Export.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace zelvar {

/// An item on its way into a list and the row where it belongs at the moment of its insertion; below 0 at the end.
template <class Handle>
struct PendingRow {
    std::int32_t row = -1;
    Handle item{};
};

/// Where rows end up when a batch of items is inserted one after the other.
///
/// Gives the result of the single insertions without their cost: rows move once, not once an item. A row beyond the end
/// means the end.
class ZELVAR_API RowPlan {
public:
    /// `insertRows`: the row of each record at its moment, in the order of insertion.
    RowPlan(std::size_t oldCount, std::vector<std::int32_t> const &insertRows);

    [[nodiscard]] std::size_t TotalCount() const { return m_oldCount + m_inserted.size(); }
    /// The final row of each record, in the order of insertion.
    [[nodiscard]] std::vector<std::uint32_t> const &InsertedRows() const { return m_inserted; }
    /// The final rows of old rows that are given in ascending order.
    [[nodiscard]] std::vector<std::uint32_t> MoveOldRows(std::vector<std::uint32_t> const &oldRows) const;
    /// Puts the records' items into `rows`; both as the plan was made for.
    template <class Handle>
    void Apply(std::vector<Handle> &rows, std::vector<PendingRow<Handle>> batch) const;

private:
    void PlanInAnyOrder(std::vector<std::int32_t> const &insertRows);

    std::size_t m_oldCount;
    std::vector<std::uint32_t> m_inserted;
    std::vector<std::uint64_t> m_taken; ///< one bit a final row: holds a record
};

template <class Handle>
void RowPlan::Apply(std::vector<Handle> &rows, std::vector<PendingRow<Handle>> batch) const {
    std::vector<Handle> merged(TotalCount());
    for (std::size_t i = 0; i < batch.size(); ++i)
        merged[m_inserted[i]] = std::move(batch[i].item);
    constexpr std::size_t kBits = 64;
    std::size_t at = 0;
    for (Handle &row : rows) {
        while ((m_taken[at / kBits] >> at % kBits & 1U) != 0)
            ++at;
        merged[at++] = std::move(row);
    }
    rows.swap(merged);
}

} // namespace zelvar
