#pragma once

#include "zelvar/data/DataFolderLook.h"

namespace zelvar::gdal {

/// GDAL's name of the format that reads such a folder, and the only one that may.
[[nodiscard]] char const *FormatOf(DataFolder kind);

/// Why the folder must not be opened, as a sentence; empty if it may: a pipe or a device lies in it, which would never
/// end, or what describes it is larger or deeper than a description may be. Looks at one level of names alone.
[[nodiscard]] DString ReasonAgainstFolder(DString const &path, DataFolder kind);

} // namespace zelvar::gdal
