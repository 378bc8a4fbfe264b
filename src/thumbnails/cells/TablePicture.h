#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/thumbnails/ThumbnailMaker.h"

namespace zelvar {

/// The first cells of a table as a small sheet of paper, names of columns above, dark on white whatever the desktop's
/// colours are: the same picture is kept for all programs. Any thread; there must be a QGuiApplication.
[[nodiscard]] ZELVAR_API DCanvas DrawTablePicture(TableGlimpse const &glimpse, int side);

} // namespace zelvar
