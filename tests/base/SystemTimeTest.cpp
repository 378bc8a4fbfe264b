#include "zelvar/base/SystemTime.h"

#include "support/Test.h"

#include <ctime>
#include <random>
#include <thread>

namespace zelvar {
namespace {

/// Runs `body` in a time zone, on a thread that knows no other zone yet.
template <class Body>
void InZone(char const *zone, Body const &body) {
    {
        test::Environment const there{{{"TZ", zone}}};
        tzset();
        std::thread(body).join();
    }
    tzset();
}

SystemTime BySystem(std::int64_t seconds) {
    std::time_t const moment = seconds;
    std::tm local{};
    localtime_r(&moment, &local);
    auto const field = [](int value) { return static_cast<std::uint16_t>(value); };
    return {field(local.tm_year + 1900), field(local.tm_mon + 1), field(local.tm_wday), field(local.tm_mday),
            field(local.tm_hour),        field(local.tm_min),     field(local.tm_sec),  0};
}

constexpr std::int64_t kSecond = 1'000'000'000;

TEST(SystemTime, AgreesWithTheSystemAroundChangesOfTheClocks) {
    // Rules written out, so that no time zone data need be installed: Central Europe, and half an hour in Australia.
    for (char const *zone : {"CET-1CEST,M3.5.0,M10.5.0/3", "LHST-10:30LHDT-11,M10.1.0,M4.1.0", "UTC"}) {
        SCOPED_TRACE(zone);
        InZone(zone, [] {
            std::mt19937_64 random(7); // NOLINT(cert-msc51-cpp): the same moments in every run
            for (int i = 0; i < 20'000; ++i) {
                auto const seconds = static_cast<std::int64_t>(random() % 6'000'000'000ULL) - 2'000'000'000;
                ASSERT_EQ(ToLocalTime(seconds * kSecond), BySystem(seconds)) << seconds;
            }
            for (std::int64_t seconds = 1'711'800'000; seconds < 1'711'900'000; seconds += 60)
                ASSERT_EQ(ToLocalTime(seconds * kSecond), BySystem(seconds)) << seconds; // 31 March 2024
        });
    }
}

TEST(SystemTime, CountsMillisecondsUpwardsBefore1970Too) {
    InZone("UTC", [] {
        EXPECT_EQ(ToLocalTime(-1), (SystemTime{1969, 12, 3, 31, 23, 59, 59, 999}));
        EXPECT_EQ(ToLocalTime(951'782'400'123'000'000), (SystemTime{2000, 2, 2, 29, 0, 0, 0, 123}));
    });
}

} // namespace
} // namespace zelvar
