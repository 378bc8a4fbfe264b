#pragma once

#include "zelvar/base/ADIColType.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DIOPlugin.h"
#include "zelvar/data/StopSignal.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace zelvar {

/// A column of a table.
struct ADIColumn {
    DString name; ///< valid UTF-8
    ADIColType type = ADICol_String;
};

/// Rows of a table that follow one another, as texts.
struct ADIRows {
    std::int64_t first = 0; ///< number of the first one
    int count = 0;
    bool isEnd = false;              ///< the table ends behind them
    DString texts;                   ///< of all cells, row by row, one behind the other; valid UTF-8
    std::vector<std::uint32_t> ends; ///< where each cell ends in `texts`; a row has as many as the table has columns

    [[nodiscard]] std::string_view Cell(std::size_t index) const {
        std::size_t const begin = index == 0 ? 0 : ends[index - 1];
        return std::string_view(texts).substr(begin, ends[index] - begin);
    }
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
};

} // namespace zelvar
