#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/SystemTime.h"

#include <cstdint>

namespace zelvar {

/// "12,345 KB" with the digits grouped as the user's locale does. Bytes below 1,024, else whole KB; larger units are
/// not used, and the number is cut to 32 bits.
[[nodiscard]] ZELVAR_API DString FormatFileSize(std::int64_t size);

/// The user's locale's short date, a blank, and its time without seconds. Without a locale of the user's
/// "2025-12-31 23:59".
[[nodiscard]] ZELVAR_API DString FormatTime(SystemTime const &time);

} // namespace zelvar
