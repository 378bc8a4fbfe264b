#pragma once

#include "zelvar/base/DString.h"

#include <system_error>

namespace zelvar::gdal {

/// GDAL's name of a file at "smb://host/share/...": "/vsismb/host/share/...", a file system of ours over the client of
/// `platform/os`, which is set up at the first need. Empty for a broken address.
[[nodiscard]] DString SmbVirtualName(DString const &url);

/// What stands against a file of that name; nothing for one that is there, and for other names.
[[nodiscard]] std::error_code SmbErrorOf(DString const &virtualName);

} // namespace zelvar::gdal
