#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>

namespace zelvar {

// What a file dialog asks the system about a path. False, or 0, for a place that does not answer; links are followed.

[[nodiscard]] bool IsThere(DString const &path);
[[nodiscard]] bool IsFolder(DString const &path);
/// Whether something is mounted right in the folder that does not answer: who lists the folder would be held by it.
[[nodiscard]] bool HoldsDeadPlace(DString const &folder);
/// Whether the folder has an entry that one of the masks fits; looks at no more entries than it must.
[[nodiscard]] bool HoldsMatch(DString const &folder, std::string_view masks);
/// Whether the file can be written, or the folder can take a new file, with the rights that the process has now.
[[nodiscard]] bool IsWritable(DString const &path);
/// When it was changed last, nanoseconds since 1970.
[[nodiscard]] std::int64_t ChangeTime(DString const &path);

} // namespace zelvar
