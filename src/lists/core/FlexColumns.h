#pragma once

#include "zelvar/base/ADIColType.h"

#include <vector>

namespace zelvar {

/// How a column sorts and whether its cells can be edited.
struct FlexColInfo {
    bool editable = false;
    ADIColType type = ADICol_None;
};

/// The column table of a list, by the columns' numbers at insertion. It is shorter than the list has columns where
/// nothing was told of the last ones.
class FlexColumns {
public:
    /// Makes room for `col`; what comes in between is neither editable nor of a type. Nothing for a negative number.
    void Grow(int col);
    void Set(int col, FlexColInfo info);
    /// `ADICol_String` outside the table; a column that was only grown over says `ADICol_None`.
    [[nodiscard]] ADIColType Type(int col) const { return Has(col) ? At(col).type : ADICol_String; }
    [[nodiscard]] bool IsEditable(int col) const { return Has(col) && At(col).editable; }
    [[nodiscard]] int Size() const { return static_cast<int>(m_columns.size()); }

    /// Takes the entry out and puts it in before the entry that then stands at `to`, or at the end. Nothing if there is
    /// no entry `from`.
    void Move(int from, int to);
    void Remove(int col);

private:
    [[nodiscard]] bool Has(int col) const { return col >= 0 && col < Size(); }
    [[nodiscard]] FlexColInfo const &At(int col) const { return m_columns[static_cast<std::size_t>(col)]; }

    std::vector<FlexColInfo> m_columns;
};

/// The first editable cell from (`item`, `subItem`) on, along the row and then from the first column of the next rows.
/// False when there is none before row `rows`; the cell then stands there.
bool FindEditableCell(FlexColumns const &columns, int rows, int cols, int &item, int &subItem);

} // namespace zelvar
