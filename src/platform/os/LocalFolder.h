#pragma once

#include "zelvar/platform/os/ShellNamespace.h"

namespace zelvar::platform {

/// What is at a path of the file system, links followed: a plain file, a folder, or nothing that can be browsed.
[[nodiscard]] std::optional<ShellKind> LocalKindOf(DString const &path);
[[nodiscard]] std::optional<FileTimes> LocalTimesOf(DString const &path);
[[nodiscard]] std::optional<FolderIdentity> LocalIdentityOf(DString const &path);

/// Visits the children of the folder at `path` in the order of its directory entries, hidden ones left out. Only what
/// must be asked is asked: size and time of plain files, and what a link leads to; folders are not touched, so a dead
/// mount below does not block. False if the folder cannot be read.
bool EnumerateLocalFolder(DString const &path, ShellId const &folder, ShellNamespace::Visitor const &visit,
                          ShellNamespace::FileTest const &wanted);

} // namespace zelvar::platform
