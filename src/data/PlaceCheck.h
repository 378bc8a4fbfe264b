#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// Whether what is mounted at `path` answers. Asked before this process itself touches a path that may lie on a file
/// server that has gone: the kernel would hold it there for minutes, deaf to everything. True for a place that needs no
/// such care, and where nobody can find out. Takes half a second at most; an answer holds for two.
[[nodiscard]] ZELVAR_API bool DoesPlaceAnswer(DString const &path);

/// What finds out; null for nobody. At the start of a program, and for tests.
ZELVAR_API void SetPlaceCheck(bool (*check)(DString const &path));

} // namespace zelvar
