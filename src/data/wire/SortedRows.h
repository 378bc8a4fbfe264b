#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zelvar::wire {

/// Where the order of a table's rows stands in shared memory: their numbers, then a bit for each that compares as equal
/// to the one before it.
class SortedRows {
public:
    explicit SortedRows(std::size_t rows) : m_rows(rows) {}

    [[nodiscard]] std::size_t TieWords() const { return (m_rows + kBits - 1) / kBits; }
    [[nodiscard]] std::size_t Bytes() const { return TiesBegin() + TieWords() * sizeof(std::uint64_t); }
    [[nodiscard]] std::span<std::uint32_t> Rows(void *memory) const {
        return {static_cast<std::uint32_t *>(memory), m_rows};
    }
    [[nodiscard]] std::span<std::uint64_t> Ties(void *memory) const {
        void *const ties = static_cast<std::byte *>(memory) + TiesBegin();
        return {static_cast<std::uint64_t *>(ties), TieWords()};
    }

private:
    static constexpr std::size_t kBits = 64;
    [[nodiscard]] std::size_t TiesBegin() const {
        constexpr std::size_t word = sizeof(std::uint64_t);
        return (m_rows * sizeof(std::uint32_t) + word - 1) / word * word;
    }

    std::size_t m_rows;
};

} // namespace zelvar::wire
