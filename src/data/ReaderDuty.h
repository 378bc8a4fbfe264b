#pragma once

#include "zelvar/data/Connection.h"

namespace zelvar {

/// What this process does as a reader: drivers register and open by it.
struct ReaderDuty {
    std::optional<ConnectionTerms> connection{}; ///< that it serves; nothing for files
};

/// Said once, by the reader's program, before any driver is there.
ZELVAR_API void TakeDuty(ReaderDuty duty);
/// Null in an application, whose drivers and settings are not ours alone.
[[nodiscard]] ZELVAR_API ReaderDuty const *OwnDuty();

} // namespace zelvar
