#pragma once

#include "zelvar/data/Connection.h"

namespace zelvar {

/// Something that a server has told one of the readers of its connection, for all of them. It is no more trusted than
/// what the server says itself.
struct ReaderNote {
    DString content{};
    std::chrono::seconds age{0};
};

/// What this process does as a reader: drivers register and open by it.
struct ReaderDuty {
    std::optional<ConnectionTerms> connection{}; ///< that it serves; nothing for files
    /// The note that a reader of the same connection has left under that name in the last minutes. Any thread. Null for
    /// files.
    std::function<std::optional<ReaderNote>(DString const &name)> findNote{};
    /// Leaves one, in place of another of that name. Any thread. Null for files.
    std::function<void(DString const &name, std::string_view content)> keepNote{};
};

/// Said once, by the reader's program, before any driver is there.
ZELVAR_API void TakeDuty(ReaderDuty duty);
/// Null in an application, whose drivers and settings are not ours alone.
[[nodiscard]] ZELVAR_API ReaderDuty const *OwnDuty();

} // namespace zelvar
