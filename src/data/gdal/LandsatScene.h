#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar::gdal {

/// A scene whose bands are files beside the one that describes it, which no format of GDAL's reads: the bands of the
/// size that most have as one picture, the others apart.
struct LandsatScene {
    DString picture;             ///< GDAL's description of it; empty if no band can be read
    std::vector<DString> others; ///< paths of TIFFs
};

/// Takes the path of "*_MTL.txt". Bands are plain TIFFs in the same folder and nothing else, whatever the description
/// says. To be called inside a `GdalScope`.
[[nodiscard]] LandsatScene ReadLandsatScene(DString const &description);

} // namespace zelvar::gdal
