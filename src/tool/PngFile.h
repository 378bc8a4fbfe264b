#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/pixels/DCanvas.h"

namespace zelvar::tool {

/// Writes a picture of up to 2 GiB, which has data, as a PNG file, for speed rather than for the last byte: with the
/// fastest compression, on two threads where it is large. False if the file cannot be written.
[[nodiscard]] bool WritePng(DCanvas const &picture, DString const &path);

} // namespace zelvar::tool
