#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/data/BDIMoniker.h"

namespace zelvar {

// The folders that the application's profile remembers for kinds of data, section "Settings".

/// The text under `key`, that of the present project where there is one; `fallback` for a key that is null, empty or
/// unknown.
[[nodiscard]] DString ReadSetting(char const *key, DString const &fallback);
/// For the present project, too. A null or empty key writes nothing.
void WriteSetting(char const *key, DString const &value);
/// The same for a folder: an empty one and "." are not worth remembering.
void WriteFolder(char const *key, DString const &folder);

/// Whether what is mounted there answers while a dialog is waited for. True for a place that needs no such care.
[[nodiscard]] bool AnswersSoon(DString const &path);
/// Whether a dialog can begin in the folder: it can be read (`mode` 0) or written. False for a place that does not
/// answer soon.
[[nodiscard]] bool CanBeginIn(DString const &folder, int mode);
/// The folders among places that were used last, in order, for a dialog that shows no others: files, addresses and
/// nodes inside containers are left out. Behind one that does not answer soon all stay, unasked.
[[nodiscard]] DVectorSafe<DString> FoldersAmong(DVectorSafe<DString> const &places);
/// The place that a dialog begins at, which answers. To save under, a bare name and a name in a folder that is there
/// are paths, whatever they hold: taken apart they could lead to another file.
[[nodiscard]] BDIMoniker InitialMoniker(DString const &place, int mode);

} // namespace zelvar
