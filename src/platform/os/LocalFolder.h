#pragma once

#include "zelvar/platform/os/ShellNamespace.h"

namespace zelvar::platform {

/// Visits the children of the folder at `path` in the order of its directory entries, hidden ones left out. Only what
/// must be asked is asked: size and time of plain files, and what a link leads to; folders are not touched, so a dead
/// mount below does not block. The error is that of the folder, or the last one of files that may not be looked at.
///
/// The visitor runs on the calling thread; in a large folder a second thread asks the system meanwhile. Entries are
/// looked at in slices, small ones where the medium is slow, so a visitor that wants to stop does not wait for long.
std::error_code EnumerateLocalFolder(DString const &path, ShellId const &folder, ShellNamespace::Visitor const &visit,
                                     ShellNamespace::FileTest const &wanted);

} // namespace zelvar::platform
