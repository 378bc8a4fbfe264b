#pragma once

namespace zelvar {

/// The column and direction of the last sort of a list.
class LastSort {
public:
    LastSort() = default;
    LastSort(int col, bool ascending) : m_ascending(ascending), m_col(col) {}

    [[nodiscard]] int GetCol() const { return m_col; }
    [[nodiscard]] bool IsSortedAscnd() const { return m_ascending; }
    /// The direction that the next sort of `col` is to take: ascending for a new column, the other way round for the
    /// same one.
    [[nodiscard]] bool IsSortAscnd(int col) const { return col != m_col || !m_ascending; }

private:
    bool m_ascending = true;
    int m_col = -2; ///< neither a column nor the -1 that stands for "none"
};

} // namespace zelvar
