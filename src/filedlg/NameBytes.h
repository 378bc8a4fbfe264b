#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QString>

namespace zelvar {

// The toolkit holds file names as texts. A name that is not UTF-8 shows with U+FFFD in it, and its bytes must be looked
// up again in its folder.

/// The name of the entry of `folder` that shows as `name`. Where several do, the first in byte order; where none does,
/// the text itself.
[[nodiscard]] DString NameBytes(DString const &folder, QString const &name);

/// The absolute path that `text`, which may be relative to `folder` and go through several folders, shows.
[[nodiscard]] DString PathBytes(DString const &folder, DString const &text);

/// Whether `text` is valid UTF-8, so that the toolkit can hold it.
[[nodiscard]] bool IsUtf8(std::string_view text);

} // namespace zelvar
