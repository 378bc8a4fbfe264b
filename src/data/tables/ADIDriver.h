#pragma once

#include "zelvar/base/ADIColType.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DIOPlugin.h"
#include "zelvar/data/StopSignal.h"
#include "zelvar/data/TableRows.h"

#include <cstdint>
#include <vector>

namespace zelvar {

/// A column of a table.
struct ADIColumn {
    DString name; ///< valid UTF-8
    ADIColType type = ADICol_String;
};

/// Attribute data interface driver: reads tables.
///
/// A handle belongs to the thread that opened it, where the driver works in this process.
class ZELVAR_API ADIDriver : public DIOPlugin {
public:
    /// What one call of `ReadRows` yields at most, but for a row that is longer by itself.
    static constexpr std::size_t kBatchBytes = std::size_t{1} << 20U;
    static constexpr std::size_t kBatchCells = std::size_t{1} << 18U;
    /// No table has more columns, no row more bytes; a longer cell is cut.
    static constexpr std::size_t kMostColumns = 200'000;
    static constexpr std::size_t kMostRowBytes = std::size_t{128} << 20U;
    static constexpr std::size_t kMostCellBytes = std::size_t{16} << 20U;

    /// Null if it does not open. `stop` may be null and must outlive the handle.
    virtual void *OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) = 0;
    /// The same for a whole family (`GetFamily`): whichever of its drivers reads the table opens, and is set in
    /// `*opener`.
    virtual void *OpenTableInFamily(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop,
                                    DError *error) {
        *opener = this;
        return OpenTable(moniker, stop, error);
    }
    virtual void CloseTable(void *handle) = 0;

    [[nodiscard]] virtual std::vector<ADIColumn> const &GetColumns(void *handle) const = 0;
    /// What its texts were taken to be written in, in words, where nothing says so; empty else.
    [[nodiscard]] virtual DString GetEncoding(void * /*handle*/) const { return {}; }
    /// Reads rows from number `first` on, `most` of them or fewer, at least one if there is one. Cheapest in order; a
    /// step back may read from the beginning. A row that cannot be read ends the table. False if it fails or was
    /// stopped.
    virtual bool ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) = 0;

    /// Whether rows are found again by their numbers, and sorted, without being kept. The rest is for such tables
    /// alone.
    ///
    /// Each call says in `known` what the table was found to be; a handle that knows less, as it is new, finds it out
    /// anew, and one that finds something else fails.
    [[nodiscard]] virtual bool KeepsPlaces(void * /*handle*/) const { return false; }
    /// Counts on until `rows` are known or some hundred megabytes more have been looked at.
    virtual bool CountRows(void * /*handle*/, std::int64_t /*rows*/, TableExtent & /*known*/, DError * /*error*/) {
        return false;
    }
    /// As `IRowStore::Read`.
    virtual bool PickRows(void * /*handle*/, TableExtent const & /*known*/,
                          std::vector<std::int64_t> const & /*wanted*/, ADIRows & /*rows*/, DError * /*error*/) {
        return false;
    }
    /// As `IRowStore::Sort`, of all rows that are known.
    virtual bool SortRows(void * /*handle*/, TableExtent const & /*known*/, int /*column*/, bool /*ascending*/,
                          RowOrder & /*order*/, DError * /*error*/) {
        return false;
    }
};

} // namespace zelvar
