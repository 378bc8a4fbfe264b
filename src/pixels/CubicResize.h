#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/pixels/DCanvas.h"
#include "zelvar/pixels/InstructionSet.h"

namespace zelvar {

/// The picture at another size, by cubic convolution (Keys, a = -1/2). Shrinking widens the kernel by the ratio, so
/// that no source pixel is passed over. Sides below 1 or an empty source clear `target`.
///
/// Larger pictures are made on two threads. The result is the same, bit for bit, on each `isa`, which `IsSupported`.
ZELVAR_API void ResizeCubic(DCanvas const &source, int width, int height, DCanvas &target, Isa isa = FastestIsa());

} // namespace zelvar
