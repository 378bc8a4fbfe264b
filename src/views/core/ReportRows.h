#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/views/core/ListViewNumbers.h"
#include "zelvar/views/core/MergeSort.h"

#include <numeric>
#include <utility>
#include <vector>

namespace zelvar {

/// The rows that a report view stores, and the groups that they are sorted under: plain values, of which a virtual
/// list has none.
class ReportRows {
public:
    struct Row {
        std::vector<DString> texts{}; ///< by sub-item; those behind the last one are empty
        int image = -1;
        int group = -1; ///< id of a group
        ItemWord word = 0;
    };

    [[nodiscard]] int Count() const { return static_cast<int>(m_rows.size()); }
    [[nodiscard]] Row const *Find(int row) const; ///< null for no such row
    [[nodiscard]] Row *Find(int row);
    [[nodiscard]] DString Text(int row, int subItem) const; ///< empty for no such row or text

    /// False for a row that does not exist, here and below. `subItem` is 0 or more.
    bool SetText(int row, int subItem, DString const &text);
    void Insert(int at, Row row); ///< `at` from 0 to `Count()`
    bool Erase(int row);
    void Clear() { m_rows.clear(); } ///< the groups stay
    /// Each row's texts from this one on go one further, where it has as many.
    void InsertTexts(int subItem);
    void EraseTexts(int subItem);

    /// A merge sort in which a row of the left half gives way to one of the right half when `comesAfter`, asked with
    /// the words of both, says so. Where each row has gone, by its former number.
    template <class ComesAfter>
    std::vector<int> Sort(ComesAfter const &comesAfter) {
        std::vector<int> order(m_rows.size());
        std::iota(order.begin(), order.end(), 0);
        std::vector<ItemWord> words; // side by side: a sort asks for them again and again
        words.reserve(m_rows.size());
        for (Row const &row : m_rows)
            words.push_back(row.word);
        MergeSort(order, [&](int a, int b) {
            return comesAfter(words[static_cast<std::size_t>(a)], words[static_cast<std::size_t>(b)]);
        });
        return Arrange(order);
    }

    void AddGroup(DString const &header, int id) { m_groups.push_back({header, id}); }
    void ClearGroups() { m_groups.clear(); }
    [[nodiscard]] int GroupCount() const { return static_cast<int>(m_groups.size()); }
    [[nodiscard]] DString const &GroupHeader(int index) const {
        return m_groups[static_cast<std::size_t>(index)].header;
    }
    /// The index of each row's group, of several with the same id that of the first; -1 for none.
    [[nodiscard]] std::vector<int> GroupOfRows() const;

private:
    struct Group {
        DString header{};
        int id = 0;
    };

    /// `order` has the former number of each row in its new place.
    std::vector<int> Arrange(std::vector<int> const &order);

    std::vector<Row> m_rows;
    std::vector<Group> m_groups;
};

} // namespace zelvar
