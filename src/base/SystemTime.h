#pragma once

#include "zelvar/base/Export.h"

#include <cstdint>

namespace zelvar {

/// A moment in local time, field by field. All zero means unknown; the year tells.
struct SystemTime {
    std::uint16_t wYear = 0;
    std::uint16_t wMonth = 0;     ///< 1 to 12
    std::uint16_t wDayOfWeek = 0; ///< 0 is Sunday
    std::uint16_t wDay = 0;
    std::uint16_t wHour = 0;
    std::uint16_t wMinute = 0;
    std::uint16_t wSecond = 0;
    std::uint16_t wMilliseconds = 0;

    friend bool operator==(SystemTime const &, SystemTime const &) = default;
};

/// Nanoseconds since 1970-01-01 UTC in the local time zone. Any thread; cheap when called with times of one day in
/// turn.
[[nodiscard]] ZELVAR_API SystemTime ToLocalTime(std::int64_t nanoseconds);

} // namespace zelvar
