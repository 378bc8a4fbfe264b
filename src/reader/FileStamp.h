#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>

namespace zelvar::reader {

/// What tells one state of a file from another. Zero and -1 if there is none.
struct FileStamp {
    std::int64_t modified = 0; ///< nanoseconds
    std::int64_t size = -1;    ///< bytes

    [[nodiscard]] bool IsThere() const { return size >= 0; }
};

/// The stamp of the file that a path or a moniker names; for a node inside a container the container's.
[[nodiscard]] FileStamp StampOf(DString const &name);

} // namespace zelvar::reader
