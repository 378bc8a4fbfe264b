#include "zelvar/data/gdal/TableDriver.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/gdal/LayerTable.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/data/tables/CsvTable.h"

#include <cpl_vsi.h>
#include <gdal.h>

#include <new>

namespace zelvar::gdal {

namespace {

/// What a handle of the driver stands for. Every call into the table happens in a scope of its reach.
struct Handle {
    std::unique_ptr<OpenTable> table;
    Reach reach;
};
Handle &Of(void *handle) { return *static_cast<Handle *>(handle); }

bool IsText(Format const &format) { return format.id == "CSV"; }

struct Opened {
    std::unique_ptr<OpenTable> table;
    Format const *format = nullptr; ///< that read it
    Reach reach = Reach::Local;

    [[nodiscard]] void *Release() {
        return table == nullptr ? nullptr : std::make_unique<Handle>(std::move(table), reach).release();
    }
};

/// Null for a file that is none of comma-separated values; `forced`: whatever its name is.
std::unique_ptr<OpenTable> OpenText(Source const &source, bool forced, StopSignal const *stop, DError *error) {
    DString const extension(ExtensionOf(source.name));
    if (!forced && !CsvTable::IsNameOne(extension))
        return nullptr;
    GdalScope const scope(source.reach);
    std::shared_ptr<VSILFILE> const file(VSIFOpenL(source.name.c_str(), "rb"), [](VSILFILE *open) {
        if (open != nullptr)
            VSIFCloseL(open);
    });
    if (file == nullptr) {
        if (error != nullptr)
            error->Set("\"" + source.text + "\" cannot be read");
        return nullptr;
    }
    auto read = [file](std::uint64_t offset, char *buffer, std::size_t size) {
        return VSIFSeekL(file.get(), offset, SEEK_SET) == 0 ? VSIFReadL(buffer, 1, size, file.get()) : std::size_t{0};
    };
    return CsvTable::Open({source.text, extension, std::move(read), source.options}, stop, error);
}

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
        std::unique_ptr<OpenTable> table = OpenText(*source, isText, stop, error);
        if (table != nullptr || identified != nullptr)
            return {std::move(table), Formats::Instance().Find("CSV"), source->reach};
    }
    std::unique_ptr<LayerTable> layer = LayerTable::Open(*source, only, stop, error);
    if (layer == nullptr)
        return {};
    Format const &format = layer->OpenedBy();
    return {std::move(layer), &format, source->reach};
}

} // namespace

void *TableDriver::OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    return OpenWith(moniker, &m_format, stop, error).Release();
}

void *TableDriver::OpenTableInFamily(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop,
                                     DError *error) {
    Opened opened = OpenWith(moniker, nullptr, stop, error);
    if (opened.table == nullptr)
        return nullptr;
    ADIDriver *const named =
        opened.format == nullptr ? nullptr : ADIDriverMngr::Instance()->GetDriver(opened.format->id.c_str());
    *opener = named != nullptr && named->GetFamily() == GetFamily() ? named : this;
    return opened.Release();
}

void TableDriver::CloseTable(void *handle) {
    std::unique_ptr<Handle> const closed(static_cast<Handle *>(handle));
    GdalScope const scope(closed->reach);
    closed->table.reset();
}

std::vector<ADIColumn> const &TableDriver::GetColumns(void *handle) const { return Of(handle).table->Columns(); }

DString TableDriver::GetEncoding(void *handle) const { return Of(handle).table->Encoding(); }

bool TableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    try {
        GdalScope const scope(Of(handle).reach);
        return Of(handle).table->ReadRows(first, most, rows);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the rows of a table");
        return false;
    }
}

} // namespace zelvar::gdal
