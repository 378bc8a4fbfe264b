#pragma once

#include "zelvar/data/gdal/FolderTree.h"

namespace zelvar::gdal {

// What servers answer when they are asked for a folder, as entries. Nothing in an answer is trusted: names that are
// none, or would lead elsewhere, are left out.

/// Of a WebDAV server's multi-status; nothing if it is none. `folder` is the address that was asked for.
[[nodiscard]] std::optional<std::vector<FolderEntry>> EntriesOfMultiStatus(std::string_view answer,
                                                                           std::string_view folder);
/// Of the page that Apache, nginx, lighttpd and their like make of a folder; nothing if it is another page. Sizes that
/// are rounded there are not known.
[[nodiscard]] std::optional<std::vector<FolderEntry>> EntriesOfIndexPage(std::string_view page,
                                                                         std::string_view folder);

/// Lists the folder of a web server at an address with "http" or "https": as WebDAV where the server speaks it, else by
/// its page. Not set for a listing, else why there is none. Inside a `GdalScope`.
[[nodiscard]] DError ListWebFolder(DString const &folder, std::vector<FolderEntry> &entries);

} // namespace zelvar::gdal
