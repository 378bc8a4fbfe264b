#include "zelvar/data/gdal/TableDriver.h"

#include "zelvar/data/ADIDriverMngr.h"
#include "zelvar/data/gdal/TableReading.h"

#include <new>

namespace zelvar::gdal {

namespace {

LayerTable &Of(void *handle) { return *static_cast<LayerTable *>(handle); }

} // namespace

void *TableDriver::OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    return LayerTable::Open(moniker, &m_format, stop, error).release();
}

void *TableDriver::OpenTableInFamily(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop,
                                     DError *error) {
    std::unique_ptr<LayerTable> table = LayerTable::Open(moniker, nullptr, stop, error);
    if (table == nullptr)
        return nullptr;
    ADIDriver *const named = ADIDriverMngr::Instance()->GetDriver(table->OpenedBy().id.c_str());
    *opener = named != nullptr && named->GetFamily() == GetFamily() ? named : this;
    return table.release();
}

void TableDriver::CloseTable(void *handle) { delete static_cast<LayerTable *>(handle); }

std::vector<ADIColumn> const &TableDriver::GetColumns(void *handle) const { return Of(handle).Columns(); }

bool TableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    try {
        return Of(handle).ReadRows(first, most, rows);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the rows of a table");
        return false;
    }
}

} // namespace zelvar::gdal
