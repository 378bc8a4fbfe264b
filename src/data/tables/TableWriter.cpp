#include "zelvar/data/tables/TableWriter.h"

#include "zelvar/data/tables/CsvTableWriter.h"
#include "zelvar/data/tables/DbfTableWriter.h"

#include <algorithm>
#include <iterator>

namespace zelvar {

std::unique_ptr<TableWriter> TableWriter::Create(DString const &format, DString const &path) {
    if (format.empty() || EqualNoCase(format, "CSV") || EqualNoCase(format, "TXT"))
        return std::make_unique<CsvTableWriter>(path);
    if (EqualNoCase(format, "TCSV"))
        return std::make_unique<TransposedCsvTableWriter>(path);
    if (EqualNoCase(format, "DBF"))
        return std::make_unique<DbfTableWriter>(path);
    return nullptr;
}

bool TableWriter::IsWritten(DString const &format) {
    constexpr std::string_view known[] = {"", "CSV", "TXT", "TCSV", "DBF"};
    return std::any_of(std::begin(known), std::end(known),
                       [&](std::string_view id) { return EqualNoCase(id, format); });
}

} // namespace zelvar
