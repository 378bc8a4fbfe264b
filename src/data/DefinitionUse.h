#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>

namespace zelvar {

/// Several definitions may have one address, as two that show different schemas of a database: what lies in them is
/// read as the one says that was used last. Any thread.

/// The tree of the definition of that name is opened or listed.
ZELVAR_API void NoteUseOf(DString const &definition);
/// The larger, the later; 0 for one that this process has not used.
[[nodiscard]] ZELVAR_API std::uint64_t LastUseOf(DString const &definition);

} // namespace zelvar
