#pragma once

#include "zelvar/base/ImageList.h"
#include "zelvar/platform/os/ShellId.h"

namespace zelvar::platform {

/// The picture of a thing by its kind and, for a plain file, the suffix of `name`: a name of the desktop's icon theme.
/// `home` marks the user's own folder, `network` a folder on a server.
[[nodiscard]] ImageDescription IconFor(ShellKind kind, std::string_view name, bool link, bool home, bool network);

} // namespace zelvar::platform
