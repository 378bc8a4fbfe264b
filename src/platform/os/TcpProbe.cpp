#include "zelvar/platform/os/TcpProbe.h"

#include "zelvar/base/FileDescriptor.h"

#include <cerrno>
#include <memory>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zelvar::platform {

namespace {

struct HostAndPort {
    DString host;
    DString port = "445";
};

HostAndPort TakeApart(std::string_view authority) {
    if (std::size_t const at = authority.rfind('@'); at != std::string_view::npos)
        authority.remove_prefix(at + 1);
    HostAndPort parts;
    std::size_t const bracket = authority.find(']'); // "[::1]:445"
    std::size_t const colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
    parts.host = authority.substr(0, colon);
    if (colon != std::string_view::npos)
        parts.port = authority.substr(colon + 1);
    if (parts.host.size() > 2 && parts.host.front() == '[' && parts.host.back() == ']')
        parts.host = parts.host.substr(1, parts.host.size() - 2);
    return parts;
}

/// 0, or the system's error number.
int Connect(addrinfo const &address, int timeoutMs) {
    FileDescriptor const socket(::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket.IsOpen())
        return errno;
    if (connect(socket.Get(), address.ai_addr, address.ai_addrlen) == 0)
        return 0;
    if (errno != EINPROGRESS)
        return errno;
    pollfd wait{.fd = socket.Get(), .events = POLLOUT, .revents = 0};
    if (poll(&wait, 1, timeoutMs) != 1)
        return ETIMEDOUT;
    int failure = 0;
    socklen_t size = sizeof failure;
    return getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, &failure, &size) == 0 ? failure : errno;
}

} // namespace

std::error_code TryToConnect(DString const &authority, int timeoutMs) {
    HostAndPort const target = TakeApart(authority);
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (getaddrinfo(target.host.c_str(), target.port.c_str(), &hints, &found) != 0)
        return std::make_error_code(std::errc::host_unreachable); // nobody knows the name
    std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> const owner(found, &freeaddrinfo);
    int error = EHOSTUNREACH;
    for (addrinfo const *address = found; address != nullptr && error != 0; address = address->ai_next)
        error = Connect(*address, timeoutMs);
    return {error, std::generic_category()};
}

} // namespace zelvar::platform
