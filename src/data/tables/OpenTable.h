#pragma once

#include "zelvar/data/tables/TableTexts.h"

namespace zelvar {

/// A table that is open, behind a cursor: few formats find a row by its number, and none of them tells cheaply how many
/// there are. So the cursor goes forward, and back to a place before the row where an earlier one is asked for. A row
/// that cannot be read ends the table, but for one that its server has not given (`HasFailed`).
class ZELVAR_API OpenTable {
public:
    virtual ~OpenTable() = default;
    OpenTable(OpenTable const &) = delete;
    OpenTable &operator=(OpenTable const &) = delete;

    [[nodiscard]] std::vector<ADIColumn> const &Columns() const { return m_columns; }
    /// As `ADIDriver::GetEncoding`.
    [[nodiscard]] DString const &Encoding() const { return m_encodingName; }
    /// As `ADIDriver::ReadRows`.
    [[nodiscard]] bool ReadRows(std::int64_t first, int most, ADIRows &rows);
    /// As those of `ADIDriver`.
    [[nodiscard]] virtual bool KeepsPlaces() const { return false; }
    virtual bool CountRows(std::int64_t /*rows*/, TableExtent & /*known*/, DError * /*error*/) { return false; }
    virtual bool PickRows(TableExtent const & /*known*/, std::vector<std::int64_t> const & /*wanted*/,
                          ADIRows & /*rows*/, DError * /*error*/) {
        return false;
    }
    virtual bool SortRows(TableExtent const & /*known*/, int /*column*/, bool /*ascending*/, RowOrder & /*order*/,
                          DError * /*error*/) {
        return false;
    }

protected:
    explicit OpenTable(StopSignal const *stop) : m_stop(stop) {}

    /// Sets the cursor before a row that is not behind `row`, and yields its number. Called to go back; one that can go
    /// ahead may do so as well.
    virtual std::int64_t GoBack(std::int64_t row) = 0;
    /// Reads the row behind the cursor; false if there is none.
    [[nodiscard]] virtual bool Step() = 0;
    /// Whether there was none the last time because it could not be read, and may be the next time: that is no end.
    [[nodiscard]] virtual bool HasFailed() const { return false; }
    /// Appends the cells of the row read last; false if there is too much of them.
    [[nodiscard]] virtual bool Append(ADIRows &rows) const = 0;

    [[nodiscard]] bool IsStopped() { return m_stop.IsStopped(); }
    [[nodiscard]] StopPoll &Stop() { return m_stop; }
    [[nodiscard]] std::int64_t NextRow() const { return m_next; }

    std::vector<ADIColumn> m_columns;
    DString m_encodingName;

private:
    [[nodiscard]] bool GoTo(std::int64_t row);
    [[nodiscard]] bool StepCounted();
    [[nodiscard]] bool Fail();

    StopPoll m_stop;
    std::int64_t m_next = 0; ///< the row that the cursor stands before
    std::int64_t m_end = -1; ///< how many rows there are, once known
};

} // namespace zelvar
