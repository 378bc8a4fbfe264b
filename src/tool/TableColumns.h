#pragma once

#include "zelvar/data/IAttrData.h"

namespace zelvar::tool {

/// The column of that name or, where none has it, of that number counted from 1; -1 for none.
[[nodiscard]] int FindColumn(IAttrData const &table, DString const &nameOrNumber);

} // namespace zelvar::tool
