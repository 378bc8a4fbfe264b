#include "zelvar/data/gdal/TableDriver.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/data/gdal/Causes.h"
#include "zelvar/data/gdal/LayerTable.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/data/tables/CsvTable.h"

#include <cpl_vsi.h>
#include <gdal.h>

#include <cerrno>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>

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

/// A plain file on disk, which the system finds any place of, on any thread. Null for what only GDAL can read.
std::shared_ptr<FileDescriptor> OpenPlain(DString const &name, std::uint64_t &bytes) {
    if (name.starts_with("/vsi"))
        return nullptr;
    auto file = std::make_shared<FileDescriptor>(open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat info {};
    if (!file->IsOpen() || fstat(file->Get(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size == 0)
        return nullptr;
    bytes = static_cast<std::uint64_t>(info.st_size);
    return file;
}

std::size_t ReadPlain(int file, std::uint64_t offset, char *buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        ssize_t const count = pread(file, buffer + done, size - done, static_cast<off_t>(offset + done));
        if (count == 0 || (count < 0 && errno != EINTR))
            break;
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    return done;
}

/// Null for a file that is none of comma-separated values; `forced`: whatever its name is.
std::unique_ptr<OpenTable> OpenText(Source const &source, bool forced, StopSignal const *stop, DError *error) {
    DString const extension(ExtensionOf(source.name));
    if (!forced && !CsvTable::IsNameOne(extension))
        return nullptr;
    std::uint64_t bytes = 0;
    if (std::shared_ptr<FileDescriptor> const plain = OpenPlain(source.name, bytes)) {
        auto read = [plain](std::uint64_t offset, char *buffer, std::size_t size) {
            return ReadPlain(plain->Get(), offset, buffer, size);
        };
        return CsvTable::Open({source.text, extension, std::move(read), source.options, bytes}, stop, error);
    }
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
    return CsvTable::Open({source.text, extension, std::move(read), source.options, 0}, stop, error);
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
    {
        GdalScope const scope(source->reach);
        if (DError refused = AskServer(*source); refused.IsSet()) {
            if (error != nullptr)
                *error = std::move(refused);
            return {};
        }
    }
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

namespace {

/// What `work` answers for the table; no where there is no memory for its rows.
template <class Work>
bool Within(void *handle, Work const &work) {
    try {
        GdalScope const scope(Of(handle).reach);
        return work(*Of(handle).table);
    } catch (std::bad_alloc const &) {
        Report::TraceMessage(Report::kTraceDriver, "no memory for the rows of a table");
        return false;
    }
}

} // namespace

bool TableDriver::ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) {
    return Within(handle, [&](zelvar::OpenTable &table) { return table.ReadRows(first, most, rows); });
}

bool TableDriver::KeepsPlaces(void *handle) const { return Of(handle).table->KeepsPlaces(); }

bool TableDriver::CountRows(void *handle, std::int64_t rows, TableExtent &known, DError *error) {
    return Within(handle, [&](zelvar::OpenTable &table) { return table.CountRows(rows, known, error); });
}

bool TableDriver::PickRows(void *handle, TableExtent const &known, std::vector<std::int64_t> const &wanted,
                           ADIRows &rows, DError *error) {
    return Within(handle, [&](zelvar::OpenTable &table) { return table.PickRows(known, wanted, rows, error); });
}

bool TableDriver::SortRows(void *handle, TableExtent const &known, int column, bool ascending, RowOrder &order,
                           DError *error) {
    return Within(handle,
                  [&](zelvar::OpenTable &table) { return table.SortRows(known, column, ascending, order, error); });
}

} // namespace zelvar::gdal
