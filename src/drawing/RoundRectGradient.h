#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

class QPainter;

namespace zelvar {

/// Fills a rectangle with rounded corners with a gradient from `startColor` to `endColor`, from top to bottom when
/// `vertical`, else from left to right. With a `borderWidth` above 0 (pixels) its outline is drawn as well.
///
/// The right edge is first moved in by one, so that a border of one pixel lies inside there; below it lies outside.
ZELVAR_API void RoundRectGradient(QPainter *dc, Rect rect, int radius, ColorRef startColor, ColorRef endColor,
                                  bool vertical, int borderWidth, ColorRef borderColor);

} // namespace zelvar
