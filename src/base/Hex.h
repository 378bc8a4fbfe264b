#pragma once

#include "zelvar/base/DString.h"

#include <optional>

namespace zelvar {

/// Two digits a byte, the high one first, upper case.
[[nodiscard]] ZELVAR_API DString HexEncode(std::string_view bytes);
/// The bytes of such a text, digits of either case; nothing if it is of another kind.
[[nodiscard]] ZELVAR_API std::optional<DString> HexDecode(std::string_view text);

} // namespace zelvar
