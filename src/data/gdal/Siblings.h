#pragma once

#include "zelvar/base/DString.h"

#include <optional>
#include <vector>

namespace zelvar::gdal {

/// Names of the plain files that lie beside the local file at `path` and may belong to it, without folders. A folder of
/// up to some hundred entries is read once and remembered until it changes; in a larger one only the names that usual
/// side files would have are asked for.
///
/// Nothing if a file that GDAL would open along is a pipe or a device, which would never end.
[[nodiscard]] std::optional<std::vector<DString>> SiblingsOf(DString const &path);

} // namespace zelvar::gdal
