#include "zelvar/data/gdal/database/DatabaseTableDriver.h"

#include "zelvar/data/gdal/database/OdbcTable.h"
#include "zelvar/data/gdal/database/PostgresTable.h"

#include <new>

namespace zelvar::gdal {

namespace {

zelvar::OpenTable &Of(void *handle) { return *static_cast<zelvar::OpenTable *>(handle); }

} // namespace

DString DatabaseTableDriver::GetId() const { return DatabaseId(m_kind); }

DString DatabaseTableDriver::GetInfo() const { return DatabaseInfo(m_kind); }

void *DatabaseTableDriver::OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    auto const address = InOwnDatabase(m_kind, moniker.GetText(), error);
    if (!address)
        return nullptr;
    std::unique_ptr<zelvar::OpenTable> table;
    if (m_kind == ConnectionKind::Odbc)
        table = OdbcTable::Open(*address, stop, error);
    else
        table = PostgresTable::Open(*address, stop, error);
    return table.release();
}

void DatabaseTableDriver::CloseTable(void *handle) { delete static_cast<zelvar::OpenTable *>(handle); }

std::vector<ADIColumn> const &DatabaseTableDriver::GetColumns(void *handle) const { return Of(handle).Columns(); }

bool DatabaseTableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    try {
        return Of(handle).ReadRows(first, most, rows);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the rows of a table");
        return false;
    }
}

} // namespace zelvar::gdal
