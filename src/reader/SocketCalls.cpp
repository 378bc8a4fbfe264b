// The calls by which libraries connect, in place of the system's: programs come first where symbols are looked for. In
// a reader of a connection the application connects; in others they do what they always do.
#include "zelvar/reader/BrokerClient.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using zelvar::reader::BrokerClient;
using zelvar::wire::HostNumber;

constexpr std::size_t kFourBytes = 4;

/// The host and port in an address of the system; false if it is of another kind.
bool TakeApart(sockaddr const *address, socklen_t size, HostNumber &number, std::uint16_t &port) {
    if (address->sa_family == AF_INET && size >= sizeof(sockaddr_in)) {
        auto const *const four = reinterpret_cast<sockaddr_in const *>(address);
        port = ntohs(four->sin_port);
        std::memcpy(number.bytes.data(), &four->sin_addr, kFourBytes);
        return true;
    }
    if (address->sa_family != AF_INET6 || size < sizeof(sockaddr_in6))
        return false;
    auto const *const six = reinterpret_cast<sockaddr_in6 const *>(address);
    port = ntohs(six->sin6_port);
    number.isSix = 1;
    std::memcpy(number.bytes.data(), &six->sin6_addr, number.bytes.size());
    return true;
}

std::uint16_t PortIn(char const *service) {
    std::uint16_t port = 0;
    std::string_view const text = service == nullptr ? "" : service;
    std::from_chars(text.data(), text.data() + text.size(), port);
    return port;
}

} // namespace

// The headers of the system name parameters as only they may.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

[[gnu::visibility("default")]] int connect(int file, sockaddr const *address, socklen_t size) {
    if (!BrokerClient::IsUsed())
        return static_cast<int>(syscall(SYS_connect, file, address, size));
    HostNumber number;
    std::uint16_t port = 0;
    if (address == nullptr || !TakeApart(address, size, number, port)) {
        errno = EACCES;
        return -1;
    }
    int const made = BrokerClient::Connect(number, port);
    if (made < 0)
        return -1;
    // It takes the place of the one that the caller has made, with the flags that are the caller's.
    int const status = fcntl(file, F_GETFL);
    int const flags = fcntl(file, F_GETFD);
    bool const isTaken = status >= 0 && dup3(made, file, (flags & FD_CLOEXEC) != 0 ? O_CLOEXEC : 0) >= 0 &&
                         fcntl(file, F_SETFL, status) == 0;
    int const error = errno;
    close(made);
    if (isTaken)
        BrokerClient::Note(file);
    errno = error;
    return isTaken ? 0 : -1;
}

[[gnu::visibility("default")]] int getaddrinfo(char const *name, char const *service, addrinfo const *hints,
                                               addrinfo **found) {
    using Call = int (*)(char const *, char const *, addrinfo const *, addrinfo **);
    static auto const system = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!BrokerClient::IsUsed() || name == nullptr)
        return system(name, service, hints, found);
    addrinfo numeric{};
    if (hints != nullptr)
        numeric = *hints;
    numeric.ai_flags = (numeric.ai_flags & ~AI_ADDRCONFIG) | AI_NUMERICHOST;
    addrinfo **end = found;
    *found = nullptr;
    for (HostNumber const &number : BrokerClient::Resolve(name, PortIn(service))) {
        std::array<char, INET6_ADDRSTRLEN> text{};
        inet_ntop(number.isSix != 0 ? AF_INET6 : AF_INET, number.bytes.data(), text.data(), text.size());
        if (system(text.data(), service, &numeric, end) != 0)
            *end = nullptr; // of a family that is not wanted
        while (*end != nullptr)
            end = &(*end)->ai_next;
    }
    return *found == nullptr ? EAI_NONAME : 0;
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
