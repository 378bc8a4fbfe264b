#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// Whether what is mounted at `path` answers, or the file server of an address. Asked before this process itself
/// touches a path that may lie on a file server that has gone: the kernel would hold it there for minutes, deaf to
/// everything. True for a place that needs no such care, and where nobody can find out. Of a mount it takes half a
/// second at most, and an answer holds for two; a server gets its seconds, on a thread of its own, and whoever waits
/// for it may end that: see `RequestScope`.
[[nodiscard]] ZELVAR_API bool DoesPlaceAnswer(DString const &path);

/// What finds out about a mount; null for nobody. At the start of a program, and for tests.
ZELVAR_API void SetPlaceCheck(bool (*check)(DString const &path));

} // namespace zelvar
