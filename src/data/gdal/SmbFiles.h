#pragma once

#include "zelvar/base/DString.h"

namespace zelvar::gdal {

/// GDAL's name of a file at "smb://host/share/...": "/vsismb/host/share/...", a file system of ours over the client of
/// `platform/os`, which is set up at the first need. Empty for a broken address.
[[nodiscard]] DString SmbVirtualName(DString const &url);

} // namespace zelvar::gdal
