#include "zelvar/data/gdal/TableDriver.h"

#include "zelvar/data/gdal/CsvTable.h"
#include "zelvar/data/gdal/LayerTable.h"
#include "zelvar/data/tables/ADIDriverMngr.h"

#include <gdal.h>

#include <new>

namespace zelvar::gdal {

namespace {

OpenTable &Of(void *handle) { return *static_cast<OpenTable *>(handle); }

bool IsText(Format const &format) { return format.id == "CSV"; }

struct Opened {
    std::unique_ptr<OpenTable> table;
    Format const *format = nullptr; ///< that read it
};

Opened OpenWith(BDIMoniker const &moniker, Format const *only, StopSignal const *stop, DError *error) {
    if (StopPoll(stop).IsStopped()) {
        if (error != nullptr)
            error->Set("stopped");
        return {};
    }
    auto const source = Resolve(moniker, error);
    if (!source)
        return {};
    // A text is what no other format takes it for.
    bool const isText = only != nullptr && IsText(*only);
    Format const *const identified = isText ? only : Identify(*source, GDAL_OF_VECTOR, only);
    if (isText || (only == nullptr && (identified == nullptr || IsText(*identified)))) {
        std::unique_ptr<OpenTable> table = CsvTable::Open(*source, isText, stop, error);
        if (table != nullptr || identified != nullptr)
            return {std::move(table), Formats::Instance().Find("CSV")};
    }
    std::unique_ptr<LayerTable> layer = LayerTable::Open(*source, only, stop, error);
    if (layer == nullptr)
        return {};
    Format const &format = layer->OpenedBy();
    return {std::move(layer), &format};
}

} // namespace

void *TableDriver::OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    return OpenWith(moniker, &m_format, stop, error).table.release();
}

void *TableDriver::OpenTableInFamily(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop,
                                     DError *error) {
    Opened opened = OpenWith(moniker, nullptr, stop, error);
    if (opened.table == nullptr)
        return nullptr;
    ADIDriver *const named =
        opened.format == nullptr ? nullptr : ADIDriverMngr::Instance()->GetDriver(opened.format->id.c_str());
    *opener = named != nullptr && named->GetFamily() == GetFamily() ? named : this;
    return opened.table.release();
}

void TableDriver::CloseTable(void *handle) { delete static_cast<gdal::OpenTable *>(handle); }

std::vector<ADIColumn> const &TableDriver::GetColumns(void *handle) const { return Of(handle).Columns(); }

DString TableDriver::GetEncoding(void *handle) const { return Of(handle).Encoding(); }

bool TableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    try {
        return Of(handle).ReadRows(first, most, rows);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the rows of a table");
        return false;
    }
}

} // namespace zelvar::gdal
