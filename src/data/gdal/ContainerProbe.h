#pragma once

#include "zelvar/data/gdal/Formats.h"

namespace zelvar::gdal {

/// True for the formats whose files may hold several images and can be told by their first bytes.
[[nodiscard]] bool IsContainerFormat(Format const &format);

/// True if the plain file at `path`, which may be an "smb://" address, or the folder there that is a data set, is of
/// that format and holds more than one image, layer or table. The first bytes are looked at first; a TIFF is followed
/// page by page without GDAL, other formats are opened and counted. The answer is remembered until the file changes.
/// Never waits on a pipe or a device. Any thread.
[[nodiscard]] bool HoldsSeveral(DString const &path, Format const &format);

/// The same for a folder that is a data set, whatever its format.
[[nodiscard]] bool IsFolderOfSeveral(DString const &path);

/// The answer of `ask`, remembered for the plain file at `path` under `kind`, a constant, until the file changes; false
/// for what is no plain file.
[[nodiscard]] bool AskOnce(DString const &path, std::string_view kind, bool (*ask)(DString const &path));

/// True if the TIFF behind the open file has a second page: directories that hold a smaller version or a mask of a page
/// are none. Reads a few hundred bytes a directory; a chain that runs in circles or out of the file ends it.
[[nodiscard]] bool HasSecondTiffPage(int file);

} // namespace zelvar::gdal
