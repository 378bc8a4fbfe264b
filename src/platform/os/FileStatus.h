#pragma once

#include "zelvar/platform/os/ShellNamespace.h"

namespace zelvar::platform {

/// What the system tells of a plain file or folder, links followed. An automount point is not mounted by the question.
struct FileStatus {
    ShellKind kind = ShellKind::Unknown; ///< `File` or `Directory`
    FileState file{};                    ///< plain files only; no time of one that has it is 0
};

/// `name` below the open directory `folder`, or a path with AT_FDCWD. Nothing for what is neither a plain file nor a
/// folder, and where nothing is.
[[nodiscard]] std::optional<FileStatus> ReadStatus(int folder, char const *name);
[[nodiscard]] std::optional<FileTimes> ReadTimes(char const *path);
[[nodiscard]] std::optional<FolderIdentity> ReadIdentity(char const *path);

} // namespace zelvar::platform
