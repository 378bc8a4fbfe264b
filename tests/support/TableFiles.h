#pragma once

#include "zelvar/data/IAttrData.h"

#include <string>
#include <vector>

namespace zelvar::test {

/// A table written down: "name:type|name:type", then a line a row, cells parted by "|". "closed" for one without
/// columns.
[[nodiscard]] inline std::vector<DString> ContentOf(IAttrData &table, int mostRows = 1'000'000) {
    if (table.GetNumCols() == 0)
        return {"closed"};
    std::vector<DString> lines(1);
    for (int col = 0; col < table.GetNumCols(); ++col)
        lines[0] += (col == 0 ? "" : "|") + table.GetColName(col) + ":" + std::to_string(table.GetColType(col));
    for (int row = 0; row < mostRows && table.SetRow(row); ++row) {
        lines.emplace_back();
        for (int col = 0; col < table.GetNumCols(); ++col)
            lines.back() += (col == 0 ? "" : "|") + table.GetText(col);
    }
    return lines;
}

/// Writes a table in another of GDAL's formats; types of comma-separated values are found out.
void ConvertTable(std::string const &csv, std::string const &path, std::string const &format);

/// The numbers of a column, read by GDAL alone; none if it does not read the file.
[[nodiscard]] std::vector<double> NumbersOf(std::string const &path, std::string const &column);

} // namespace zelvar::test
