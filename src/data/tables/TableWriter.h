#pragma once

#include "zelvar/data/tables/ADIDriver.h"

#include <memory>
#include <string_view>
#include <vector>

namespace zelvar {

/// One format's way to write a table: gets the columns, then as many cells for each row as there are columns.
class TableWriter {
public:
    virtual ~TableWriter() = default;
    TableWriter(TableWriter const &) = delete;
    TableWriter &operator=(TableWriter const &) = delete;

    /// Whether all has gone well so far.
    [[nodiscard]] virtual bool IsGood() const = 0;
    virtual void Begin(std::vector<ADIColumn> const &columns) = 0;
    /// `text`: valid UTF-8; a number so that reading it gives the same number.
    virtual void AddCell(std::string_view text) = 0;
    /// True when the table stands in its place. False leaves there what was there before.
    [[nodiscard]] virtual bool Finish() = 0;

    /// Whether tables are written in a format of that id; case is not regarded.
    [[nodiscard]] static bool IsWritten(DString const &format);
    /// Null for a format that is not.
    [[nodiscard]] static std::unique_ptr<TableWriter> Create(DString const &format, DString const &path);

protected:
    TableWriter() = default;
};

} // namespace zelvar
