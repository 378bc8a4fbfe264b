#include "zelvar/data/TableWriter.h"

#include "zelvar/data/CsvTableWriter.h"
#include "zelvar/data/DbfTableWriter.h"

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

} // namespace zelvar
