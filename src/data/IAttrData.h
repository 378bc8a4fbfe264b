#pragma once

#include "zelvar/base/ADIColType.h"
#include "zelvar/base/DString.h"

#include <cstdint>
#include <memory>

namespace zelvar {

class IRowStore;

/// Attribute data interface: a table with named, typed columns. It is either read, row by row, or written, once from
/// its first cell to its last. One thread at a time.
class ZELVAR_API IAttrData {
public:
    virtual ~IAttrData() = default;
    IAttrData(IAttrData const &) = delete;
    IAttrData &operator=(IAttrData const &) = delete;

    [[nodiscard]] virtual int GetNumCols() const = 0;
    /// Valid UTF-8. Empty for a column that is not there.
    [[nodiscard]] virtual DString GetColName(int col) const = 0;
    /// `ADICol_String` for a column that is not there.
    [[nodiscard]] virtual ADIColType GetColType(int col) const = 0;

    /// Steps to a row, counted from 0; false behind the last one, and the table has no current row then. Steps forward
    /// cost what lies between; a step back may cost all that lies before. How many rows there are is known at the end
    /// only.
    [[nodiscard]] virtual bool SetRow(int row) = 0;
    /// Whether the last step found no row because the table could not be read on (a stop, a budget, a reader that was
    /// lost), which is not its end.
    [[nodiscard]] virtual bool HasFailed() const { return false; }
    /// The text of a cell of the current row, valid UTF-8; empty for a cell without a value and one that is not there.
    [[nodiscard]] virtual DString GetText(int col) const = 0;

    /// The rows themselves, where they can be had by their numbers at any time; else null. They can be asked for after
    /// this object is gone.
    [[nodiscard]] virtual std::shared_ptr<IRowStore> GetRowStore() { return nullptr; }

    /// Begins to write; what both say is a hint.
    virtual void InitTable(int rows, int cols) = 0;
    /// All columns come before the first row.
    virtual void AddCol(char const *name, ADIColType type) = 0;
    virtual void AddRow() = 0;
    /// Write the next cell of the row added last. Cells that are not written are empty; those behind the last column
    /// are left out. A null text is an empty one.
    virtual void WriteString(char const *text) = 0;
    virtual void WriteInt(std::int64_t value) = 0;
    virtual void WriteDouble(double value) = 0;
    /// Puts the table where it belongs. False if any of it could not be written: what was there before is as it was.
    virtual bool Finish() = 0;

protected:
    IAttrData() = default;
};

} // namespace zelvar
