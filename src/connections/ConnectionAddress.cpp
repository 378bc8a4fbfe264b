#include "zelvar/connections/ConnectionAddress.h"

#include "zelvar/base/Percent.h"

#include <algorithm>
#include <charconv>

namespace zelvar {

namespace {

DString Lower(std::string_view text) {
    DString lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

bool IsScheme(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+' || c == '-' ||
               c == '.';
    });
}

/// What stands for a host there is one, and no bucket or name, in which case counts.
bool HasServer(std::string_view scheme) {
    return scheme.starts_with("postgres") ? scheme.find('+') == std::string_view::npos
                                          : scheme.ends_with("http") || scheme.ends_with("https");
}

/// "." and ".." lead elsewhere wherever paths are tidied up.
DString EncodedName(DString const &name) {
    if (name == ".")
        return "%2E";
    return name == ".." ? "%2E%2E" : PercentEncoded(name);
}

/// The parts of an address as they are written.
struct Written {
    std::string_view scheme;
    std::string_view login; ///< "user:password"
    bool hasLogin = false;
    std::string_view server; ///< "host:port"
    std::string_view path;   ///< without the first "/"
    bool hasPath = false;
    std::string_view query;
};

std::optional<Written> TakeApart(std::string_view text) {
    Written parts;
    std::size_t const colon = text.find("://");
    if (colon == std::string_view::npos || !IsScheme(text.substr(0, colon)))
        return std::nullopt;
    parts.scheme = text.substr(0, colon);
    text.remove_prefix(colon + 3);
    text = text.substr(0, text.find('#'));
    // A password that was typed may hold anything but what ends the server's name.
    std::size_t const slash = std::min(text.find_first_of("/?"), text.size());
    std::string_view authority = text.substr(0, slash);
    text.remove_prefix(slash);
    if (std::size_t const at = authority.rfind('@'); at != std::string_view::npos) {
        parts.login = authority.substr(0, at);
        parts.hasLogin = true;
        authority.remove_prefix(at + 1);
    }
    parts.server = authority;
    std::size_t const question = std::min(text.find('?'), text.size());
    parts.hasPath = question > 0;
    parts.path = parts.hasPath ? text.substr(1, question - 1) : std::string_view();
    if (question < text.size())
        parts.query = text.substr(question + 1);
    return parts;
}

ConnectionAddress::Query ParseQuery(std::string_view text) {
    ConnectionAddress::Query query;
    for (DString const &item : Split(text, '&')) {
        if (item.empty())
            continue;
        std::size_t const equals = item.find('=');
        query.emplace_back(PercentDecoded(std::string_view(item).substr(0, equals)),
                           equals == DString::npos ? std::nullopt
                                                   : std::optional(PercentDecoded(item.substr(equals + 1))));
    }
    return query;
}

/// Keys of services are the same in either case.
bool HasAll(ConnectionAddress::Query const &query, ConnectionAddress::Query const &wanted) {
    return std::all_of(wanted.begin(), wanted.end(), [&](auto const &item) {
        return std::any_of(query.begin(), query.end(), [&](auto const &other) {
            return EqualNoCase(item.first, other.first) && item.second == other.second;
        });
    });
}

} // namespace

std::optional<std::uint16_t> ParsePort(std::string_view text) {
    unsigned number = 0;
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size() || number == 0 || number > 0xFFFF)
        return std::nullopt;
    return static_cast<std::uint16_t>(number);
}

std::optional<HostAndPort> ParseHostAndPort(std::string_view text) {
    DString host;
    if (text.starts_with('[')) {
        std::size_t const end = text.find(']');
        if (end == std::string_view::npos)
            return std::nullopt;
        host = text.substr(1, end - 1);
        text.remove_prefix(end + 1);
    } else {
        std::size_t const colon = std::min(text.rfind(':'), text.size());
        host = text.substr(0, colon);
        text.remove_prefix(colon);
        if (host.find(':') != DString::npos) { // IPv6 without brackets
            host.append(text);
            text = {};
        }
    }
    if (text.empty())
        return HostAndPort{.host = host};
    std::optional<std::uint16_t> const port = text.front() == ':' ? ParsePort(text.substr(1)) : std::nullopt;
    return port ? std::optional(HostAndPort{host, *port}) : std::nullopt;
}

std::optional<ConnectionAddress> ParseConnectionAddress(std::string_view text) {
    std::optional<Written> const parts = TakeApart(text);
    if (!parts)
        return std::nullopt;
    ConnectionAddress address;
    address.scheme = Lower(parts->scheme);
    if (address.scheme == "postgres")
        address.scheme = "postgresql";
    address.user = PercentDecoded(parts->login.substr(0, parts->login.find(':')));
    if (HasServer(address.scheme)) {
        auto const server = ParseHostAndPort(parts->server);
        if (!server)
            return std::nullopt;
        address.host = Lower(PercentDecoded(server->host));
        address.port = server->port;
    } else {
        address.host = PercentDecoded(parts->server);
    }
    if (parts->hasPath)
        for (DString const &name : Split(parts->path, '/'))
            address.path.push_back(PercentDecoded(name));
    address.query = ParseQuery(parts->query);
    return address;
}

std::optional<DString> PasswordInAddress(std::string_view text) {
    std::optional<Written> const parts = TakeApart(text);
    std::size_t const colon = parts ? parts->login.find(':') : std::string_view::npos;
    if (colon == std::string_view::npos)
        return std::nullopt;
    return PercentDecoded(parts->login.substr(colon + 1));
}

DString ConnectionAddress::ToText() const {
    DString text = scheme + "://";
    if (!user.empty())
        text.append(PercentEncoded(user)).append("@");
    bool const isIPv6 = HasServer(scheme) && host.find(':') != DString::npos;
    text.append(TextOf(HostAndPort{isIPv6 ? host : PercentEncoded(host), port}));
    for (DString const &name : path)
        text.append("/").append(EncodedName(name));
    char const *before = "?";
    for (auto const &[key, value] : query) {
        text.append(std::exchange(before, "&")).append(PercentEncoded(key));
        if (value)
            text.append("=").append(PercentEncoded(*value));
    }
    return text;
}

ConnectionAddress ConnectionAddress::Inside(std::vector<DString> const &names, Query const &options) const {
    ConnectionAddress inside = *this;
    if (!names.empty() && !inside.path.empty() && inside.path.back().empty())
        inside.path.pop_back();
    inside.path.insert(inside.path.end(), names.begin(), names.end());
    inside.query.insert(inside.query.end(), options.begin(), options.end());
    return inside;
}

bool ConnectionAddress::Holds(ConnectionAddress const &other) const {
    bool const isOfAllBuckets = host.empty() && path.empty() && !HasServer(scheme);
    bool const isOnHost = host == other.host || isOfAllBuckets;
    if (scheme != other.scheme || user != other.user || !isOnHost || PortOrUsual() != other.PortOrUsual())
        return false;
    auto const size = static_cast<std::ptrdiff_t>(path.size());
    std::ptrdiff_t const named = size - (size > 0 && path.back().empty() ? 1 : 0);
    return static_cast<std::ptrdiff_t>(other.path.size()) >= named &&
           std::equal(path.begin(), path.begin() + named, other.path.begin()) && HasAll(other.query, query);
}

std::uint16_t ConnectionAddress::PortOrUsual() const {
    constexpr std::uint16_t kPostgres = 5432;
    constexpr std::uint16_t kHttp = 80;
    constexpr std::uint16_t kHttps = 443;
    if (port != 0 || !HasServer(scheme))
        return port;
    return scheme == "postgresql" ? kPostgres : scheme.ends_with("https") ? kHttps : kHttp;
}

DString ConnectionAddress::Target() const {
    return HasServer(scheme) ? TextOf(HostAndPort{host, PortOrUsual()})
                             : scheme + "://" + (user.empty() ? "" : user + "@") + host;
}

} // namespace zelvar
