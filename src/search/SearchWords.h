#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace zelvar {

/// "4096": a whole number that is not negative, digits alone.
[[nodiscard]] ZELVAR_API std::optional<std::int64_t> WholeNumberFrom(std::string_view text);

/// "4096", "10K", "2g": bytes, with K, M, G and T as powers of 1024. Whole numbers alone.
[[nodiscard]] ZELVAR_API std::optional<std::int64_t> BytesFrom(std::string_view text);

/// "2026-11-16", or with "T10:30" or "T10:30:00" or a blank for the "T", in local time; or so long ago: "7d", hours
/// "12h". Nanoseconds since 1970 UTC.
[[nodiscard]] ZELVAR_API std::optional<std::int64_t> MomentFrom(DString text);

} // namespace zelvar
