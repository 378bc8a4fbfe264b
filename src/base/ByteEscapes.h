#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// What `EscapeControlBytes` and `EscapeToUtf8` made a text of: \xHH becomes the byte, but for a zero.
[[nodiscard]] ZELVAR_API DString UnescapeBytes(std::string_view text);
/// Bytes that are no UTF-8 written as \xHH, and with them a backslash that would read as such an escape. Valid text
/// stays as it is.
[[nodiscard]] ZELVAR_API DString EscapeToUtf8(std::string_view bytes);

} // namespace zelvar
