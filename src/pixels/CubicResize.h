#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"

namespace zelvar {

/// The picture at another size, by cubic convolution (Keys, a = -1/2). Shrinking widens the kernel by the ratio, so
/// that no source pixel is passed over. Sides below 1 or an empty source clear `target`.
ZELVAR_API void ResizeCubic(DCanvas const &source, int width, int height, DCanvas &target);

} // namespace zelvar
