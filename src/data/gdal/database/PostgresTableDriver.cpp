#include "zelvar/data/gdal/database/PostgresTableDriver.h"

#include "zelvar/data/gdal/database/PostgresTable.h"

#include <new>

namespace zelvar::gdal {

namespace {

PostgresTable &Of(void *handle) { return *static_cast<PostgresTable *>(handle); }

} // namespace

void *PostgresTableDriver::OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    ConnectionTerms const *const terms = OwnDatabase(ConnectionKind::PostgreSql);
    auto const address = terms == nullptr ? std::nullopt : DatabaseAddress::In(*terms, moniker.GetText(), error);
    return address ? PostgresTable::Open(*address, stop, error).release() : nullptr;
}

void PostgresTableDriver::CloseTable(void *handle) { delete static_cast<PostgresTable *>(handle); }

std::vector<ADIColumn> const &PostgresTableDriver::GetColumns(void *handle) const { return Of(handle).Columns(); }

bool PostgresTableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    try {
        return Of(handle).ReadRows(first, most, rows);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the rows of a table");
        return false;
    }
}

} // namespace zelvar::gdal
