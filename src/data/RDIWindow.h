#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// A window of an image, pixels, and the size that it is brought to.
struct RDIWindow {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    int outWidth = 0;
    int outHeight = 0;

    /// Whether it is one at all, and within what any image can have.
    [[nodiscard]] ZELVAR_API bool IsSensible() const;
};

/// A stretch of an axis, without its end.
struct RDISpan {
    int begin = 0;
    int end = 0;
    [[nodiscard]] int Length() const { return end - begin; }
};
/// Of `outSize` samples that a window of that place and size along an axis is brought to, those whose centres lie from
/// `begin` up to `end`.
[[nodiscard]] ZELVAR_API RDISpan RDISamplesInside(double offset, double size, int outSize, double begin, double end);
/// Those of `count` cells of `size` pixels that a stretch of an axis touches.
[[nodiscard]] ZELVAR_API RDISpan RDICellsOf(double offset, double length, int size, int count);

/// How much of damaged data could be read.
struct RDIRowsRead {
    int rows = 0;
    int all = 0; ///< 0 where nothing was damaged
};

} // namespace zelvar
