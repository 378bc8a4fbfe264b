#include "zelvar/data/gdal/SmbFiles.h"

#include "zelvar/platform/os/SmbClient.h"

#include <cpl_vsi.h>

namespace zelvar::gdal {

DString SmbVirtualName(DString const &) { return {}; }

} // namespace zelvar::gdal
