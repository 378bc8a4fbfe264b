#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"

#include <QtCore/QString>

namespace zelvar::platform {

/// For showing. Bytes that are not UTF-8 read as U+FFFD, so the result must never be used to open a file again:
/// rows and widgets keep the `DString` they were made from.
[[nodiscard]] ZELVAR_API QString ToQString(std::string_view text);

/// The name of a file or of what lies in one, or its path, for showing in a line: control characters, ends of lines and
/// what turns the direction of the characters behind it are written as \xHH and \uHHHH, as a name could read as another
/// one otherwise. What is longer than any path is cut.
[[nodiscard]] ZELVAR_API QString ToShownName(std::string_view name);

/// A text of the library in the user's language, for showing: see `Translated`.
[[nodiscard]] ZELVAR_API QString Shown(char const *text);

/// What a user typed or picked, as UTF-8.
[[nodiscard]] ZELVAR_API DString ToDString(QString const &text);

/// A text for a tool tip: what would be taken for markup shows as it is written.
[[nodiscard]] ZELVAR_API QString ToToolTip(QString const &text);

} // namespace zelvar::platform
