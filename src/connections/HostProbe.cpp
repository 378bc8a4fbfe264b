#include "zelvar/connections/HostProbe.h"

#include "zelvar/base/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

namespace zelvar {

namespace {

constexpr std::chrono::milliseconds kPulse{20}; ///< how often a stop is looked for

/// Where the asking thread leaves its answer; it may come after the caller has gone.
struct Answer {
    std::mutex mutex;
    std::condition_variable arrived;
    bool done = false;
    std::shared_ptr<addrinfo> found; ///< null for an unknown name
};

std::shared_ptr<addrinfo> Resolve(HostAndPort const &server) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(server.host.c_str(), std::to_string(server.port).c_str(), &hints, &found) != 0)
        return nullptr;
    return {found, &freeaddrinfo};
}

} // namespace

ProbeState HostProbe::LookUp() {
    if (IsStopped())
        return ProbeState::Stopped;
    auto const answer = std::make_shared<Answer>();
    std::thread([answer, server = m_server] {
        std::shared_ptr<addrinfo> found = Resolve(server);
        std::lock_guard const lock(answer->mutex);
        answer->found = std::move(found);
        answer->done = true;
        answer->arrived.notify_all();
    }).detach();
    auto const end = std::chrono::steady_clock::now() + m_time;
    std::unique_lock lock(answer->mutex);
    while (!answer->done) {
        if (IsStopped())
            return ProbeState::Stopped;
        if (std::chrono::steady_clock::now() >= end)
            return ProbeState::Late;
        answer->arrived.wait_for(lock, kPulse);
    }
    m_found = answer->found;
    return m_found == nullptr ? ProbeState::Unknown : ProbeState::Reached;
}

DString HostProbe::Number() const {
    std::array<char, NI_MAXHOST> text{};
    bool const isTold = m_found != nullptr && getnameinfo(m_found->ai_addr, m_found->ai_addrlen, text.data(),
                                                          text.size(), nullptr, 0, NI_NUMERICHOST) == 0;
    return isTold ? DString(text.data()) : DString();
}

ProbeState HostProbe::Connect() {
    auto const end = std::chrono::steady_clock::now() + m_time;
    ProbeState state = ProbeState::Failed;
    for (addrinfo const *address = m_found.get(); address != nullptr; address = address->ai_next) {
        state = ConnectTo(*address, end);
        if (state == ProbeState::Reached || state == ProbeState::Stopped || state == ProbeState::Late)
            return state;
    }
    return state;
}

ProbeState HostProbe::ConnectTo(addrinfo const &address, std::chrono::steady_clock::time_point end) {
    auto const fail = [this](int error) {
        m_error = {error, std::generic_category()};
        return error == ECONNREFUSED ? ProbeState::Refused : error == ETIMEDOUT ? ProbeState::Late : ProbeState::Failed;
    };
    FileDescriptor const socket(::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.IsOpen())
        return fail(errno);
    if (connect(socket.Get(), address.ai_addr, address.ai_addrlen) == 0)
        return ProbeState::Reached;
    if (errno != EINPROGRESS)
        return fail(errno);
    pollfd wait{.fd = socket.Get(), .events = POLLOUT, .revents = 0};
    while (poll(&wait, 1, static_cast<int>(kPulse.count())) != 1) {
        if (IsStopped())
            return ProbeState::Stopped;
        if (std::chrono::steady_clock::now() >= end)
            return ProbeState::Late;
    }
    int failure = 0;
    socklen_t size = sizeof failure;
    if (getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, &failure, &size) != 0)
        failure = errno;
    return failure == 0 ? ProbeState::Reached : fail(failure);
}

} // namespace zelvar
