#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/ImageList.h"

#include <QtGui/QIcon>
#include <QtGui/QPixmap>

namespace zelvar::platform {

/// Side of the pictures in lists and trees, pixels before scaling.
inline constexpr int kSmallPicture = 16;

/// A picture of an image list at a size and a device's pixel ratio; made once, then kept. Null for a null list or an
/// index outside it. A name that neither the desktop's theme nor the resources know shows a plain file.
///
/// `ImageDescription::fallback` and the name of a strip are names of the resources below, without folder and ending, or
/// full resource paths. The pictures of a strip stand side by side, each as wide as the strip is high.
[[nodiscard]] ZELVAR_API QPixmap ListPicture(HIMAGELIST list, int index, qreal devicePixelRatio,
                                             int side = kSmallPicture);

/// The same for one description.
[[nodiscard]] ZELVAR_API QPixmap Picture(ImageDescription const &description, qreal devicePixelRatio,
                                         int side = kSmallPicture);

/// Whether the description has a picture itself, so that no fallback stands for it.
[[nodiscard]] ZELVAR_API bool HasPicture(ImageDescription const &description);

/// The number of pictures in a strip; 0 for none of that name.
[[nodiscard]] ZELVAR_API int StripCount(DString const &name);

/// One of our own pictures by what it shows: "folder", "folder-data", "folder-up", "file", "image", "table",
/// "container", "drive", "drive-optical", "drive-removable", "drive-network", "series", "server", "share", "database",
/// "star", "panel", "restore-layout", "recursive", "look-rows", "look-tiles", "back", "forward", "recent", "basket",
/// "search", "link-overlay", "size-grip", "stop", "warning", "information", "vector", "computer", "network", "home"; or
/// by the desktop's name for one of these, such as "drive-harddisk".
[[nodiscard]] ZELVAR_API QPixmap ResourcePicture(QString const &name, qreal devicePixelRatio, int side = kSmallPicture);
/// For buttons and actions: drawn sharp at any size; washed out while disabled.
[[nodiscard]] ZELVAR_API QIcon ResourceIcon(QString const &name);
[[nodiscard]] ZELVAR_API QIcon DescribedIcon(ImageDescription const &description);

} // namespace zelvar::platform
