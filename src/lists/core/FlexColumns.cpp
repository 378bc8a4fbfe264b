#include "zelvar/lists/core/FlexColumns.h"

#include <algorithm>

namespace zelvar {

void FlexColumns::Grow(int col) {
    if (col >= Size())
        m_columns.resize(static_cast<std::size_t>(col) + 1);
}

void FlexColumns::Set(int col, FlexColInfo info) {
    if (col < 0)
        return;
    Grow(col);
    m_columns[static_cast<std::size_t>(col)] = info;
}

void FlexColumns::Move(int from, int to) {
    if (!Has(from))
        return;
    FlexColInfo const moved = At(from);
    m_columns.erase(m_columns.begin() + from);
    m_columns.insert(m_columns.begin() + std::clamp(to, 0, Size()), moved);
}

void FlexColumns::Remove(int col) {
    if (Has(col))
        m_columns.erase(m_columns.begin() + col);
}

bool FindEditableCell(FlexColumns const &columns, int rows, int cols, int &item, int &subItem) {
    int const last = std::min(cols, columns.Size()); // beyond the table nothing is editable
    bool any = false;
    for (int col = 0; col < last; ++col)
        any = any || columns.IsEditable(col);
    if (!any)
        item = rows;
    for (; item < rows; ++item, subItem = 0)
        for (; subItem < last; ++subItem)
            if (columns.IsEditable(subItem))
                return true;
    return false;
}

} // namespace zelvar
