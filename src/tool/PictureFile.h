#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/pixels/DCanvas.h"

namespace zelvar::tool {

/// Writes the picture as a PNG file, which is quickly made and small enough. False if the file cannot be written.
bool SavePicture(DCanvas const &canvas, DString const &file);

} // namespace zelvar::tool
