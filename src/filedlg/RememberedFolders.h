#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

// The folders that the application's profile remembers for kinds of data, section "Settings".

/// The text under `key`; `fallback` for a key that is null, empty or unknown.
[[nodiscard]] DString ReadSetting(char const *key, DString const &fallback);
/// A null or empty key writes nothing.
void WriteSetting(char const *key, DString const &value);
/// The same for a folder: an empty one and "." are not worth remembering.
void WriteFolder(char const *key, DString const &folder);

/// Whether what is mounted there answers while a dialog is waited for. True for a place that needs no such care.
[[nodiscard]] bool AnswersSoon(DString const &path);
/// Whether a dialog can begin in the folder: it can be read (`mode` 0) or written. False for a place that does not
/// answer soon.
[[nodiscard]] bool CanBeginIn(DString const &folder, int mode);

} // namespace zelvar
