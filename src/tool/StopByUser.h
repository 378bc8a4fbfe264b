#pragma once

#include "zelvar/data/StopSignal.h"

#include <csignal>

namespace zelvar::tool {

/// While it lives, Ctrl-C sets the stop signal; a second one ends the program. One at a time.
class StopByUser {
public:
    StopByUser() {
        static_assert(StopSignal::is_always_lock_free, "a signal handler writes it");
        struct sigaction action {};
        action.sa_handler = [](int) { s_isStopped = true; };
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(SIGINT, &action, &m_former);
    }
    ~StopByUser() { sigaction(SIGINT, &m_former, nullptr); }
    StopByUser(StopByUser const &) = delete;
    StopByUser &operator=(StopByUser const &) = delete;
    [[nodiscard]] StopSignal &Signal() const { return s_isStopped; }

private:
    static inline StopSignal s_isStopped{false};
    struct sigaction m_former {};
};

} // namespace zelvar::tool
