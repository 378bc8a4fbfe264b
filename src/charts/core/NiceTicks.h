#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"

namespace zelvar {

/// An axis whose ends and tick marks are round numbers.
struct NiceAxis {
    double minimum = 0;
    double maximum = 1;
    double step = 1; ///< 1, 2 or 5 times a power of ten; marks by adding it up from the minimum reach the maximum
};

/// The smallest such axis that holds a range with `ticks` marks or somewhat fewer. A range that is empty or not finite
/// gets an axis around what there is.
[[nodiscard]] ZELVAR_API NiceAxis NiceAxisOver(double minimum, double maximum, int ticks);

/// What an axis shows in place of its numbers: (number - offset) / factor.
struct AxisScale {
    double offset = 0;
    double factor = 1;

    [[nodiscard]] double Of(double number) const { return (number - offset) / factor; }
    [[nodiscard]] ZELVAR_API NiceAxis Of(NiceAxis const &axis) const;
    /// A caption that tells so behind its text, if there is something to tell.
    [[nodiscard]] ZELVAR_API DString Caption(DString const &text) const;
};

/// The first of a few scales with which no two marks of the axis read alike or are too long, as `write` makes them.
[[nodiscard]] ZELVAR_API AxisScale ScaleFor(NiceAxis const &axis, DString (*write)(double));

} // namespace zelvar
