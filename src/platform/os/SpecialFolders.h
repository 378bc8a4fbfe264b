#pragma once

#include "zelvar/platform/os/ShellNamespace.h"

namespace zelvar::platform {

/// The user's home: $HOME, else what the password table says; empty if neither names one.
[[nodiscard]] DString HomeFolder();

/// The value of `key`, as "XDG_DOCUMENTS_DIR", in the text of a "user-dirs.dirs" file; empty if it is not there.
[[nodiscard]] DString FindUserDirectory(std::string_view text, std::string_view key, std::string_view home);

/// What the user's "user-dirs.dirs" says, else the customary name below the home folder; the home folder itself where
/// that one does not exist. Nothing without a home folder.
[[nodiscard]] std::optional<DString> FindSpecialFolder(ShellFolderOf which);

} // namespace zelvar::platform
