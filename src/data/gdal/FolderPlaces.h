#pragma once

#include "zelvar/data/gdal/FolderTree.h"

namespace zelvar::gdal {

/// Folders on disk. Hidden names, pipes and devices are left out.
[[nodiscard]] FolderPlace const &DiskPlace();
/// Listings of web servers and object stores, as GDAL's virtual file systems read them.
[[nodiscard]] FolderPlace const &WebPlace();
/// Shares and folders of file servers.
[[nodiscard]] FolderPlace const &SmbPlace();

/// The folder that `url` names for that kind of place, as its own paths are written; empty if it names none.
[[nodiscard]] DString RootOf(FolderKind kind, DString const &url);

} // namespace zelvar::gdal
