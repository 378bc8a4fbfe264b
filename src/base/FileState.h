#pragma once

#include <cstdint>

namespace zelvar {

/// What the system tells of a plain file: another state, and it is another file or has changed.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;   ///< 0 where the source numbers no files
    std::int64_t size = -1;    ///< bytes; -1 if unknown
    std::int64_t modified = 0; ///< nanoseconds since 1970 UTC; 0 if unknown
    std::int64_t changed = 0;  ///< the same of the file or of what is noted about it; no program can set it

    friend bool operator==(FileState const &, FileState const &) = default;
};

} // namespace zelvar
