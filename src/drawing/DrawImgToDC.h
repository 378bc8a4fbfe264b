#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"

class QPainter;

namespace zelvar {

/// Draws the image in `file` into the middle of `rect`, as large as it fits: three channels as colours, fewer as grey
/// from the first, samples reduced to bytes by `ScaleDataBuf`. False, and nothing drawn, if no driver opens it.
ZELVAR_API bool DrawImgToDC(char const *file, QPainter *dc, Rect const &rect);

} // namespace zelvar
