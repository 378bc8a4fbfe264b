#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// A path from the root without empty elements, "." and "..", as the system follows it: ".." behind a link leads out of
/// the folder that the link stands for. Other links stay as they are. `mayLook` is asked before the disk is looked at,
/// at what stands before a ".."; where it says no, and where nothing is, the text alone tells. Null for always.
[[nodiscard]] ZELVAR_API DString NormalPath(std::string_view absolute, bool (*mayLook)(DString const &path) = nullptr);

} // namespace zelvar
