#pragma once

#include "zelvar/data/tables/CsvEncoding.h"
#include "zelvar/data/tables/CsvIndex.h"
#include "zelvar/data/tables/SharedWork.h"
#include "zelvar/data/tables/TextCode.h"

#include <memory>
#include <mutex>
#include <optional>
#include <span>

namespace zelvar {

/// Orders the rows of a file of comma-separated values by the texts of a column, in the order of a list's cells: the
/// numbers above 0 from large to small, what is 0 as a number by its text, the numbers below 0; descending the other
/// way round. Rows that compare as equal stand in the order of the file.
///
/// The texts stay in the file. Each pass over it makes a word of each cell, numbers first, unless a sample of many rows
/// shows none; texts that one word does not
/// tell apart are looked at further behind, or, once few bytes of them are left, all at once. So a row takes 12 bytes,
/// and 4 more while texts are told apart.
class CsvSort {
public:
    static constexpr std::size_t kMostHeld = std::size_t{40} << 20U; ///< bytes
    /// What is referred to outlives this. Texts that are still to be told apart are kept for that once they take no
    /// more than `mostHeld`.
    CsvSort(CsvIndex const &index, CsvEncoding const &encoding, std::size_t column, bool ascending, StopPoll &stop,
            std::size_t mostHeld = kMostHeld);

    enum class Result { Done, Stopped, Changed };
    /// Orders as many of the first rows as `order` has room for.
    [[nodiscard]] Result Run(RowOrder &order);

private:
    using VisitOpen = std::function<void(std::size_t worker, std::size_t slot, std::string_view text)>;
    struct Region {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    /// `piecesPerOne` above 1 for a sample.
    [[nodiscard]] bool ForEachText(VisitOpen const &visit, std::size_t piecesPerOne = 1);
    [[nodiscard]] bool GuessCode();
    [[nodiscard]] bool ReadFirstTime(TextFacts &facts, std::size_t &texts);
    [[nodiscard]] bool SortNumbers(TextFacts &facts);
    [[nodiscard]] bool SortTexts(TextFacts facts);
    [[nodiscard]] bool SortRest();
    [[nodiscard]] bool FindFacts(std::size_t begin, TextFacts &facts);
    [[nodiscard]] bool SortGroups();
    void Collect();
    [[nodiscard]] std::uint64_t OrderedWord(std::uint64_t word) const { return m_ascending ? word : ~word; }
    void MarkTies(std::size_t begin, std::size_t end);

    [[nodiscard]] std::size_t OpenCount() const { return m_isAllOpen ? m_region.end - m_region.begin : m_open.size(); }
    [[nodiscard]] std::size_t OpenSlot(std::size_t i) const { return m_isAllOpen ? m_region.begin + i : m_open[i]; }
    [[nodiscard]] std::size_t GroupEnd(std::size_t slot) const;

    CsvIndex const *m_index;       ///< not owned
    CsvEncoding const *m_encoding; ///< not owned
    std::mutex m_encodingMutex;
    std::size_t m_column;
    bool m_ascending;
    std::size_t m_mostHeld;
    SharedWork m_work;
    bool m_hasChanged = false;

    std::span<std::uint32_t> m_rows;
    RowOrder *m_order = nullptr;             ///< not owned
    std::unique_ptr<std::uint64_t[]> m_keys; ///< of the row in the same slot
    std::optional<TextCode> m_guess;         ///< made of a sample, for the first words of all rows
    Region m_region;                         ///< of the slots of those that are 0 as numbers
    bool m_isAllOpen = true;                 ///< all of that region, by row, is still to be told apart
    std::vector<std::uint32_t> m_open;       ///< else these slots of it, by row
};

} // namespace zelvar
