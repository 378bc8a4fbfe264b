#include "zelvar/tool/TableColumns.h"

#include "zelvar/data/reader/DriverModule.h"

#include <charconv>

namespace zelvar::tool {

int FindColumn(IAttrData const &table, DString const &nameOrNumber) {
    for (int col = 0; col < table.GetNumCols(); ++col)
        if (table.GetColName(col) == nameOrNumber)
            return col;
    int number = 0;
    auto const [end, error] = std::from_chars(nameOrNumber.data(), nameOrNumber.data() + nameOrNumber.size(), number);
    bool const isNumber = error == std::errc{} && end == nameOrNumber.data() + nameOrNumber.size();
    return isNumber && number >= 1 && number <= table.GetNumCols() ? number - 1 : -1;
}

DString ReadingFailureOf(DString const &file) {
    DString const reason = ReaderFailureOf(file);
    return reason.empty() ? "the table ends before its last row" : reason;
}

} // namespace zelvar::tool
