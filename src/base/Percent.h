#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// "%41" becomes "A"; what is no such escape stays.
[[nodiscard]] ZELVAR_API DString PercentDecoded(std::string_view text);
/// Bytes other than letters, digits and "-._~" as "%HH"; with `keepSlashes` "/" stays as well.
[[nodiscard]] ZELVAR_API DString PercentEncoded(std::string_view text, bool keepSlashes = false);

} // namespace zelvar
