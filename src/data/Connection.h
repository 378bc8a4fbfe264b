#pragma once

#include "zelvar/base/DString.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace zelvar {

/// What stands at the other end of a connection. The readers of a kind have the drivers of that kind.
enum class ConnectionKind {
    Address, ///< a file or an index behind an address that was typed
    PostgreSql,
    MapService,
    ObjectStore,
    WebFolder,
    Odbc,
};

struct HostAndPort {
    DString host{};         ///< a name or a number, IPv6 without brackets; "*.name" is any name below that one
    std::uint16_t port = 0; ///< 0 is any
    friend bool operator==(HostAndPort const &, HostAndPort const &) = default;
};
/// "maps.lab:443", "[::1]:80"; the host alone for any port.
[[nodiscard]] ZELVAR_API DString TextOf(HostAndPort const &place);
/// What such a text says, the host in lower case; `port` where it names none. Nothing if it is none.
[[nodiscard]] ZELVAR_API std::optional<HostAndPort> PlaceIn(std::string_view text, std::uint16_t port);

/// What a reader that serves one connection may reach, and what it is told. A value.
struct ConnectionTerms {
    DString id{}; ///< tells connections apart: the definition's address, or scheme://user@host:port; holds no secret
    ConnectionKind kind = ConnectionKind::Address;
    std::vector<HostAndPort> hosts{};     ///< that may be connected to; the server itself comes first
    std::map<DString, DString> options{}; ///< no secrets: sslmode, endpoint, region, ca ...
    std::map<DString, DString> secrets{}; ///< password, key ...: handed over in sealed memory, never logged
    std::chrono::milliseconds connectTime{5000};
    DString missing{}; ///< in words, where the address needs a connection that nobody has made: nothing is reached then
    friend bool operator==(ConnectionTerms const &, ConnectionTerms const &) = default;
};
/// Whether the terms allow that host and port; case is not regarded. Port 0 asks whether any port of it is allowed.
[[nodiscard]] ZELVAR_API bool MayReach(ConnectionTerms const &terms, std::string_view host, std::uint16_t port);

/// What is told of a host that the terms do not allow: "the server sends on to cdn.lab:443, which ..."
[[nodiscard]] ZELVAR_API DString SendsOnText(HostAndPort const &place);
/// The host that such a text names, wherever it stands in it; nothing for another text, or for a name that is not one
/// of a single host: it is a server's word.
[[nodiscard]] ZELVAR_API std::optional<HostAndPort> HostSentOnTo(std::string_view text);
/// What is told of another host that is allowed, and whose certificate nobody vouches for; the way back as above.
[[nodiscard]] ZELVAR_API DString UntrustedElsewhereText(HostAndPort const &place);
[[nodiscard]] ZELVAR_API std::optional<HostAndPort> HostUntrustedElsewhere(std::string_view text);

/// Whether an address is that of a map service, or of something in one: "wms+https://...".
[[nodiscard]] ZELVAR_API bool IsMapServiceAddress(std::string_view address);

/// What is known of the connection that an address belongs to; nothing where none is defined. Any thread.
using ConnectionFinder = std::function<std::optional<ConnectionTerms>(std::string_view address)>;
/// Installed by the room that keeps definitions; null for none.
ZELVAR_API void SetConnectionFinder(ConnectionFinder finder);

/// The finder's answer, else what the address says of itself: its host and port alone. `address` may also be the name
/// of a node inside a thing on the network. Without hosts, and with an empty id, for what is no such address.
[[nodiscard]] ZELVAR_API ConnectionTerms TermsOf(std::string_view address);

} // namespace zelvar
