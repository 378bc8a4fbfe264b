#include "zelvar/platform/os/TcpProbe.h"

#include "zelvar/platform/os/Dialing.h"

#include <charconv>

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

} // namespace

std::error_code TryToConnect(DString const &authority, int timeoutMs) {
    HostAndPort const target = TakeApart(authority);
    std::uint16_t port = 0;
    std::from_chars(target.port.data(), target.port.data() + target.port.size(), port);
    auto const patience = [timeoutMs] { return Patience(std::chrono::milliseconds(timeoutMs), [] { return false; }); };
    int error = 0;
    std::vector<wire::HostNumber> const numbers = ResolveHost(target.host, patience(), error);
    if (numbers.empty())
        return std::make_error_code(std::errc::host_unreachable); // nobody knows the name
    for (wire::HostNumber const &number : numbers)
        if (DialHost(number, port, patience(), error).IsOpen())
            return {};
    return {error, std::generic_category()};
}

} // namespace zelvar::platform
