#pragma once

#include <chrono>

namespace zelvar::test {

using Clock = std::chrono::steady_clock;

/// How much longer things may take under a sanitizer.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSlower = 8;
#else
constexpr int kSlower = 1;
#endif

[[nodiscard]] inline std::chrono::milliseconds Since(Clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
}

} // namespace zelvar::test
