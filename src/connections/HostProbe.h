#pragma once

#include "zelvar/data/Connection.h"
#include "zelvar/data/StopSignal.h"

#include <chrono>
#include <memory>
#include <system_error>

struct addrinfo;

namespace zelvar {

/// How an attempt to reach a server has ended.
enum class ProbeState { Reached, Unknown, Refused, Late, Stopped, Failed };

/// Looks for a server and connects to it, each within a time; a stop ends either at once. Nothing is sent.
class HostProbe {
public:
    HostProbe(HostAndPort server, std::chrono::milliseconds time, StopSignal const *stop)
        : m_server(std::move(server)), m_time(time), m_stop(stop) {}

    /// Asks the system's resolver, on a thread of its own: nobody can end that.
    ProbeState LookUp();
    /// What the name stands for, as a number; after `LookUp`.
    [[nodiscard]] DString Number() const;
    /// Tries each of the numbers until one takes the connection, which is closed then.
    ProbeState Connect();
    /// Of the last attempt, for `Failed`.
    [[nodiscard]] std::error_code Error() const { return m_error; }

private:
    [[nodiscard]] bool IsStopped() const { return m_stop != nullptr && *m_stop; }
    [[nodiscard]] ProbeState ConnectTo(addrinfo const &address, std::chrono::steady_clock::time_point end);

    HostAndPort m_server;
    std::chrono::milliseconds m_time;
    StopSignal const *m_stop;
    std::shared_ptr<addrinfo> m_found{};
    std::error_code m_error{};
};

} // namespace zelvar
