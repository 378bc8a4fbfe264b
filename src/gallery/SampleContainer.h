#pragma once

#include "zelvar/base/DString.h"

namespace zelvar::gallery {

/// Writes an archive of a plate's images, folders of files of several pages each, to play with. False if it cannot be
/// written.
bool WriteSampleContainer(DString const &path);

} // namespace zelvar::gallery
