#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// An axis whose ends and tick marks are round numbers.
struct NiceAxis {
    double minimum = 0;
    double maximum = 1;
    double step = 1; ///< 1, 2 or 5 times a power of ten
};

/// The smallest such axis that holds a range with `ticks` marks or somewhat fewer. A range that is empty or not finite
/// gets an axis around what there is.
[[nodiscard]] ZELVAR_API NiceAxis NiceAxisOver(double minimum, double maximum, int ticks);

} // namespace zelvar
