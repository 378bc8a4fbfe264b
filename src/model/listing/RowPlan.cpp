#include "zelvar/model/listing/RowPlan.h"

#include <bit>

namespace zelvar {

namespace {

constexpr std::size_t kBits = 64;

/// Free places in a row of places, found by their number: one bit a place, and sums over words in a binary indexed
/// tree.
class FreePlaces {
public:
    explicit FreePlaces(std::size_t count) : m_free((count + kBits - 1) / kBits, ~std::uint64_t{0}) {
        if (count % kBits != 0)
            m_free.back() = (std::uint64_t{1} << count % kBits) - 1;
        m_sums.resize(m_free.size() + 1);
        for (std::size_t i = 1; i < m_sums.size(); ++i) {
            m_sums[i] += static_cast<std::uint32_t>(std::popcount(m_free[i - 1]));
            if (std::size_t const above = i + (i & (~i + 1)); above < m_sums.size())
                m_sums[above] += m_sums[i];
        }
    }

    /// Takes the free place number `rank` and yields it.
    std::size_t Take(std::size_t rank) {
        std::size_t word = 0;
        for (std::size_t step = std::bit_floor(m_free.size()); step != 0; step /= 2)
            if (word + step < m_sums.size() && m_sums[word + step] <= rank) {
                word += step;
                rank -= m_sums[word];
            }
        std::uint64_t bits = m_free[word];
        for (; rank != 0; --rank)
            bits &= bits - 1;
        auto const bit = static_cast<std::size_t>(std::countr_zero(bits));
        m_free[word] &= ~(std::uint64_t{1} << bit);
        for (std::size_t i = word + 1; i < m_sums.size(); i += i & (~i + 1))
            --m_sums[i];
        return word * kBits + bit;
    }

private:
    std::vector<std::uint64_t> m_free;
    std::vector<std::uint32_t> m_sums;
};

} // namespace

RowPlan::RowPlan(std::size_t oldCount, std::vector<std::int32_t> const &insertRows) : m_oldCount(oldCount) {
    m_inserted.reserve(insertRows.size());
    bool inOrder = true;
    for (std::int32_t const row : insertRows) {
        std::size_t const end = oldCount + m_inserted.size();
        std::size_t const at = row < 0 || static_cast<std::size_t>(row) > end ? end : static_cast<std::size_t>(row);
        inOrder = inOrder && (m_inserted.empty() || at > m_inserted.back());
        m_inserted.push_back(static_cast<std::uint32_t>(at));
    }
    if (!inOrder) { // else no record is moved by a later one
        std::vector<std::int32_t> const clamped(m_inserted.begin(), m_inserted.end());
        PlanInAnyOrder(clamped);
    }
    m_taken.assign(TotalCount() / kBits + 1, 0);
    for (std::uint32_t const row : m_inserted)
        m_taken[row / kBits] |= std::uint64_t{1} << row % kBits;
}

void RowPlan::PlanInAnyOrder(std::vector<std::int32_t> const &insertRows) {
    // Seen from the end: the last record stands where it was put; the one before takes its place among those that the
    // last has left, and so on. What remains free belongs to the old rows.
    FreePlaces places(TotalCount());
    for (std::size_t i = insertRows.size(); i-- > 0;)
        m_inserted[i] = static_cast<std::uint32_t>(places.Take(static_cast<std::size_t>(insertRows[i])));
}

std::vector<std::uint32_t> RowPlan::MoveOldRows(std::vector<std::uint32_t> const &oldRows) const {
    std::vector<std::uint32_t> moved;
    moved.reserve(oldRows.size());
    std::size_t word = 0;
    std::size_t before = 0; // old rows in the words passed
    for (std::uint32_t const old : oldRows) {
        if (old >= m_oldCount)
            break;
        auto const freeIn = [this](std::size_t at) {
            return kBits - static_cast<std::size_t>(std::popcount(m_taken[at]));
        };
        while (before + freeIn(word) <= old)
            before += freeIn(word++);
        std::uint64_t free = ~m_taken[word];
        for (std::size_t skip = old - before; skip != 0; --skip)
            free &= free - 1;
        moved.push_back(static_cast<std::uint32_t>(word * kBits + static_cast<std::size_t>(std::countr_zero(free))));
    }
    return moved;
}

} // namespace zelvar
