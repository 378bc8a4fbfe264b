#pragma once

#include "zelvar/data/gdal/Source.h"

namespace zelvar::gdal {

/// Whether an option of that name is never taken from a moniker: it runs statements, opens what a table names, writes
/// beside the file, or leads elsewhere; and what is set here anyway.
[[nodiscard]] bool IsBarredOption(std::string_view name);

/// What GDAL is to open the source with: what the moniker says, decoded, as far as the format knows it, and what holds
/// for every file of the format. Options that it does not know, or that are barred, are left out with a line in the
/// log. A value leads nowhere that a moniker does not: one that names a file names a plain file on a disk. For any
/// other `fault` is set, in words, and nothing is to be opened.
[[nodiscard]] std::vector<DString> OpenOptionsFor(Source const &source, Format const &format, DString &fault);

} // namespace zelvar::gdal
