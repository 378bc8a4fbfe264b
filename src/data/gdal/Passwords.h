#pragma once

#include "zelvar/data/gdal/Source.h"

namespace zelvar::gdal {

/// Whether the file on disk, or the member of an archive, says that it is encrypted: archives, office documents. Of
/// what is encrypted without a word nothing can be known. Inside a `GdalScope`.
[[nodiscard]] bool NeedsPassword(Source const &source);

} // namespace zelvar::gdal
