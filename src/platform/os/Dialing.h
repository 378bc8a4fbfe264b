#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/wire/ConnectRecords.h"

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace zelvar::platform {

/// How long somebody waits for a server, and what ends the wait before. One thread.
class Patience {
public:
    using Clock = std::chrono::steady_clock;

    /// `isStopped` is asked whenever `wake` can be read, which it leaves so, or `other` has hung up.
    Patience(std::chrono::milliseconds time, int wake, int other, std::function<bool()> isStopped)
        : m_deadline(Clock::now() + time), m_wake(wake), m_other(other), m_isStopped(std::move(isStopped)) {}

    /// The same where nothing wakes who waits: `isStopped` is asked again and again.
    Patience(std::chrono::milliseconds time, std::function<bool()> isStopped)
        : Patience(time, -1, -1, std::move(isStopped)) {}

    /// Until `file` is ready for `events`: 0, else ETIMEDOUT or ECANCELED.
    [[nodiscard]] int WaitFor(int file, short events) const;

private:
    Clock::time_point m_deadline;
    int m_wake; ///< as the next one, below 0 for none
    int m_other;
    std::function<bool()> m_isStopped;
};

/// The number that a text is; nothing for a name.
[[nodiscard]] std::optional<wire::HostNumber> NumberOf(DString const &text);
[[nodiscard]] DString TextOf(wire::HostNumber const &number);

/// The numbers of a host by the system's resolver, which may take its time: on a thread of its own, that is left behind
/// when the patience ends. `error`: 0, ENOENT for a name that nobody knows, ETIMEDOUT, ECANCELED.
[[nodiscard]] std::vector<wire::HostNumber> ResolveHost(DString const &name, Patience const &patience, int &error);

/// A connection to that host and port, without delays for small parts; not open, and why, if there is none.
[[nodiscard]] FileDescriptor DialHost(wire::HostNumber const &number, std::uint16_t port, Patience const &patience,
                                      int &error);

} // namespace zelvar::platform
