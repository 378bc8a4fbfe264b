#pragma once

#include "zelvar/base/Export.h"

#include <QtGui/QColor>

namespace zelvar::platform {

/// `share` of `b`, from 0 to 1, in `a`.
[[nodiscard]] ZELVAR_API QColor Mixed(QColor const &a, QColor const &b, double share);
/// From 1, the same, to 21, black on white; texts are read well from 4.5 on.
[[nodiscard]] ZELVAR_API double Contrast(QColor const &a, QColor const &b);
/// Black or white, whichever is read better on `face`.
[[nodiscard]] ZELVAR_API QColor ReadableOn(QColor const &face);

/// The desktop shows light texts on dark grounds.
[[nodiscard]] ZELVAR_API bool IsPaletteDark();
/// A fixed colour as the desktop's palette has it: itself on a light one; on a dark one the same hue with its lightness
/// turned round, so that white becomes the ground of lists and black their text.
[[nodiscard]] ZELVAR_API QColor Themed(QColor const &color);
/// A fixed colour of texts and signs that stand on `ground`. On a dark palette one that would not be read well there is
/// themed, and moved as far towards black or white as it takes.
[[nodiscard]] ZELVAR_API QColor ThemedInk(QColor const &color, QColor const &ground);

} // namespace zelvar::platform
