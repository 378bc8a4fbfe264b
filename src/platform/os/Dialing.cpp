#include "zelvar/platform/os/Dialing.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace zelvar::platform {

namespace {

using wire::HostNumber;

constexpr std::size_t kFourBytes = 4;

/// A question to the resolver. The thread that asks may outlive who waits.
struct Resolution {
    FileDescriptor answered{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::mutex mutex;
    std::vector<HostNumber> numbers; ///< guarded by it
};

void Resolve(DString const &name, Resolution &resolution) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0)
        found = nullptr;
    std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> const owner(found, &freeaddrinfo);
    {
        std::lock_guard const lock(resolution.mutex);
        for (addrinfo const *address = found; address != nullptr; address = address->ai_next) {
            HostNumber number;
            if (address->ai_family == AF_INET) {
                auto const *const four = reinterpret_cast<sockaddr_in const *>(address->ai_addr);
                std::memcpy(number.bytes.data(), &four->sin_addr, kFourBytes);
            } else if (address->ai_family == AF_INET6) {
                auto const *const six = reinterpret_cast<sockaddr_in6 const *>(address->ai_addr);
                number.isSix = 1;
                std::memcpy(number.bytes.data(), &six->sin6_addr, number.bytes.size());
            } else {
                continue;
            }
            resolution.numbers.push_back(number);
        }
    }
    eventfd_write(resolution.answered.Get(), 1);
}

int ConnectTo(int socket, HostNumber const &number, std::uint16_t port) {
    if (number.isSix != 0) {
        sockaddr_in6 to{};
        to.sin6_family = AF_INET6;
        to.sin6_port = htons(port);
        std::memcpy(&to.sin6_addr, number.bytes.data(), number.bytes.size());
        return connect(socket, reinterpret_cast<sockaddr const *>(&to), sizeof to);
    }
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    std::memcpy(&to.sin_addr, number.bytes.data(), kFourBytes);
    return connect(socket, reinterpret_cast<sockaddr const *>(&to), sizeof to);
}

} // namespace

int Patience::WaitFor(int file, short events) const {
    while (true) {
        if (m_isStopped())
            return ECANCELED;
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(m_deadline - Clock::now()).count();
        if (left <= 0)
            return ETIMEDOUT;
        pollfd waits[] = {{.fd = file, .events = events, .revents = 0},
                          {.fd = m_wake, .events = POLLIN, .revents = 0},
                          {.fd = m_other, .events = 0, .revents = 0}};
        constexpr long pulse = 20;
        long const longest = m_wake < 0 ? pulse : 1'000'000;
        int const count = poll(waits, std::size(waits), static_cast<int>(std::min(left, longest)));
        if (count < 0 && errno != EINTR)
            return errno;
        if (count > 0 && waits[2].revents != 0)
            return ECANCELED; // who asked has gone
        if (count > 0 && waits[0].revents != 0 && !m_isStopped())
            return 0;
    }
}

std::optional<HostNumber> NumberOf(DString const &text) {
    HostNumber number;
    if (inet_pton(AF_INET, text.c_str(), number.bytes.data()) == 1)
        return number;
    number.isSix = 1;
    if (inet_pton(AF_INET6, text.c_str(), number.bytes.data()) == 1)
        return number;
    return std::nullopt;
}

DString TextOf(HostNumber const &number) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(number.isSix != 0 ? AF_INET6 : AF_INET, number.bytes.data(), text.data(), text.size());
    return text.data();
}

std::vector<HostNumber> ResolveHost(DString const &name, Patience const &patience, int &error) {
    error = 0;
    if (auto const number = NumberOf(name))
        return {*number};
    auto const resolution = std::make_shared<Resolution>();
    try {
        std::thread([name, resolution] { Resolve(name, *resolution); }).detach();
    } catch (std::system_error const &failure) {
        error = failure.code().value();
        return {};
    }
    error = patience.WaitFor(resolution->answered.Get(), POLLIN);
    std::lock_guard const lock(resolution->mutex);
    if (error == 0 && resolution->numbers.empty())
        error = ENOENT;
    return error == 0 ? resolution->numbers : std::vector<HostNumber>();
}

FileDescriptor DialHost(HostNumber const &number, std::uint16_t port, Patience const &patience, int &error) {
    FileDescriptor socket(
        ::socket(number.isSix != 0 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    error = socket.IsOpen() && ConnectTo(socket.Get(), number, port) == 0 ? 0 : errno;
    if (error == EINPROGRESS) {
        error = patience.WaitFor(socket.Get(), POLLOUT);
        socklen_t size = sizeof error;
        if (error == 0 && getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, &error, &size) != 0)
            error = errno;
    }
    if (error != 0)
        return FileDescriptor(-1);
    int const yes = 1;
    for (auto const &[level, option] : {std::pair<int, int>(IPPROTO_TCP, TCP_NODELAY), {SOL_SOCKET, SO_KEEPALIVE}})
        setsockopt(socket.Get(), level, option, &yes, sizeof yes); // without them it is slower, no more
    return socket;
}

} // namespace zelvar::platform
