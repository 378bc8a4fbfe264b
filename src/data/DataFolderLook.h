#pragma once

#include "zelvar/model/datasets/DataFolder.h"

#include <cstdint>

namespace zelvar {

/// A folder on a disk of this machine that is a data set, and the path of what a driver opens of it.
struct FoundDataFolder {
    DataFolder kind;
    DString entry;
    std::int64_t modified = 0; ///< the latest of the folder and of the files that tell what it is, nanoseconds
};

/// Looks whether the folder at `path` is a data set: a few questions for names and one read of the folder, whatever
/// its size, some ten microseconds. Nothing for a file, and for a folder that cannot be read. On a place that does not
/// answer it blocks like any other call of the system: who lists asks before.
[[nodiscard]] ZELVAR_API std::optional<FoundDataFolder> LookForDataFolder(DString const &path);

} // namespace zelvar
