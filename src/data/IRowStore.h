#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/TableRows.h"

namespace zelvar {

/// Rows of a table that stay where they are, as in a file: they are counted without being kept, read again by their
/// numbers and sorted where they lie. It outlives the `IAttrData` that it is of. One thread at a time.
///
/// What fails says why in `*error` (may be null) and can be asked for again; a file that is not what it was when its
/// rows were counted fails for good. Who asks may stop it by a `RequestScope`, which is told of the progress.
class ZELVAR_API IRowStore {
public:
    virtual ~IRowStore() = default;
    IRowStore(IRowStore const &) = delete;
    IRowStore &operator=(IRowStore const &) = delete;

    /// The rows that have been counted.
    [[nodiscard]] virtual TableExtent const &Known() const = 0;
    /// Counts on until `rows` are known, or a good many more than before.
    [[nodiscard]] virtual bool CountOn(std::int64_t rows, DError *error) = 0;
    /// Reads rows that are known, in any order: the first ones of those wanted, at least one. A row has as many cells
    /// as the table has columns.
    [[nodiscard]] virtual bool Read(std::vector<std::int64_t> const &wanted, ADIRows &rows, DError *error) = 0;
    /// Sorts the rows that are known by a column, in the order of `core/CellOrder.h` of the lists; rows that compare as
    /// equal come in the order of the table.
    [[nodiscard]] virtual bool Sort(int col, bool ascending, RowOrder &order, DError *error) = 0;

protected:
    IRowStore() = default;
};

} // namespace zelvar
