#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/ImageList.h"
#include "zelvar/platform/os/ShellId.h"

namespace zelvar::platform {

/// The picture of a thing by its kind and, for a plain file, the suffix of `name`: a name of the desktop's icon theme.
/// `home` marks the user's own folder, `network` a folder on a server.
[[nodiscard]] ImageDescription IconFor(ShellKind kind, std::string_view name, bool link, bool home, bool network);

/// Whether a file's name tells what is in it. One without a suffix, or with one that stands for anything ("dat",
/// "bak"), does not.
[[nodiscard]] ZELVAR_API bool SaysWhatItIs(std::string_view name);

} // namespace zelvar::platform
