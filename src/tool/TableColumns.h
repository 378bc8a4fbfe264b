#pragma once

#include "zelvar/data/IAttrData.h"

namespace zelvar::tool {

/// The column of that name or, where none has it, of that number counted from 1; -1 for none.
[[nodiscard]] int FindColumn(IAttrData const &table, DString const &nameOrNumber);

/// Why the rows of a table could not be read on.
[[nodiscard]] DString ReadingFailureOf(DString const &file);

} // namespace zelvar::tool
