#pragma once

#include "zelvar/base/DString.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace zelvar {

// Files of monikers: one a line, in its own bytes but for control characters (`EscapeControlBytes`), as `zelvar find`
// and `zelvar open` print them. Empty lines, and those that begin with "#", say nothing. A relative path is one from
// the folder of the file.

/// Through a file beside it that takes its place when it is whole; false leaves what was there.
[[nodiscard]] bool WriteMonikers(DString const &path, std::vector<DString> const &monikers);
/// Nothing for a file that cannot be read, has more than 64 MB, or holds a zero byte, as no text does.
[[nodiscard]] std::optional<std::vector<DString>> ReadMonikers(DString const &path);

/// Where the path begins in a moniker as drivers write those of what lies inside a file, `NAME:"/path":inside` or
/// `NAME:1:/path`; 0 for any other. Looks at no disk.
[[nodiscard]] std::size_t PathBehindDriver(std::string_view moniker);

} // namespace zelvar
