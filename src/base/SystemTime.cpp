#include "zelvar/base/SystemTime.h"

#include <array>
#include <ctime>

namespace zelvar {

namespace {

constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

/// Local time less UTC at that moment, seconds, as the system's time zone data tell it.
std::int64_t AskOffset(std::int64_t seconds) {
    std::time_t const moment = seconds;
    std::tm local{};
    return localtime_r(&moment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

/// What is known of a day, counted in UTC from 1970 on.
struct DayOffset {
    std::int64_t day = INT64_MIN;
    std::int64_t offset = 0; ///< seconds, valid for the whole day if `uniform`
    bool uniform = false;    ///< the clocks are not changed on that day
};

std::int64_t OffsetAt(std::int64_t seconds) {
    // Listings show times of many days, mostly of a few neighbouring years.
    static thread_local std::array<DayOffset, 1024> days;
    std::int64_t const day = FloorDivide(seconds, kSecondsPerDay);
    DayOffset &known = days[static_cast<std::uint64_t>(day) % days.size()];
    if (known.day != day) {
        std::int64_t const first = AskOffset(day * kSecondsPerDay);
        std::int64_t const last = AskOffset((day + 1) * kSecondsPerDay - 1);
        known = {day, first, first == last};
    }
    return known.uniform ? known.offset : AskOffset(seconds);
}

struct Date {
    std::int64_t year = 0;
    int month = 0;
    int day = 0;
};

/// Gregorian date of a day counted from 1970-01-01. Years are counted from March, so that the leap day ends them.
Date DateOf(std::int64_t day) {
    std::int64_t const shifted = day + 719'468; // days since 0000-03-01
    std::int64_t const era = FloorDivide(shifted, 146'097);
    std::int64_t const dayOfEra = shifted - era * 146'097;
    std::int64_t const yearOfEra = (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
    std::int64_t const dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    auto const marchMonth = static_cast<int>((5 * dayOfYear + 2) / 153);
    int const month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month,
            static_cast<int>(dayOfYear - (153 * marchMonth + 2) / 5 + 1)};
}

} // namespace

SystemTime ToLocalTime(std::int64_t nanoseconds) {
    std::int64_t const utc = FloorDivide(nanoseconds, kNanosecondsPerSecond);
    std::int64_t const fraction = nanoseconds - utc * kNanosecondsPerSecond;
    std::int64_t const local = utc + OffsetAt(utc);
    std::int64_t const day = FloorDivide(local, kSecondsPerDay);
    std::int64_t const second = local - day * kSecondsPerDay;
    Date const date = DateOf(day);
    std::int64_t const weekday = ((day + 4) % 7 + 7) % 7; // 1970-01-01 was a Thursday
    return {static_cast<std::uint16_t>(date.year),      static_cast<std::uint16_t>(date.month),
            static_cast<std::uint16_t>(weekday),        static_cast<std::uint16_t>(date.day),
            static_cast<std::uint16_t>(second / 3'600), static_cast<std::uint16_t>(second / 60 % 60),
            static_cast<std::uint16_t>(second % 60),    static_cast<std::uint16_t>(fraction / 1'000'000)};
}

} // namespace zelvar
