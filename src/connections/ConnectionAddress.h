#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/data/Connection.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace zelvar {

/// The address of a connection, or of something in it, taken apart: "postgresql://zelvar@db.lab:5432/field/survey". All
/// parts are the bytes that they stand for; only the text is percent-encoded. It never holds a password. A value.
struct ZELVAR_API ConnectionAddress {
    using Query = std::vector<std::pair<DString, std::optional<DString>>>; ///< a key may stand without a value

    DString scheme{};            ///< in lower case: "postgresql", "wms+https", "s3"
    DString user{};              ///< account or profile; empty for none
    DString host{};              ///< or bucket, or name of a source; a server's in lower case, IPv6 without brackets
    std::uint16_t port = 0;      ///< 0 for none
    std::vector<DString> path{}; ///< the names between "/"; an empty last one stands for a "/" at the end
    Query query{};

    [[nodiscard]] DString ToText() const;
    /// That of something inside: `names` below it, `options` behind its query.
    [[nodiscard]] ConnectionAddress Inside(std::vector<DString> const &names, Query const &options = {}) const;
    /// Whether `other` is this or lies in it: the same server and account, a path that begins so, a query that has all
    /// of this one's.
    [[nodiscard]] bool Holds(ConnectionAddress const &other) const;
    /// The port, or that which the scheme has by itself; 0 for a scheme without ports.
    [[nodiscard]] std::uint16_t PortOrUsual() const;
    /// "db.lab:5432": what an address is about, for people.
    [[nodiscard]] DString Target() const;

    friend bool operator==(ConnectionAddress const &, ConnectionAddress const &) = default;
};

/// Nothing for what is no "scheme://...", or has a port that is none. A password is left out, see `PasswordInAddress`.
[[nodiscard]] ZELVAR_API std::optional<ConnectionAddress> ParseConnectionAddress(std::string_view text);
/// The password behind the account of an address, decoded; nothing for none.
[[nodiscard]] ZELVAR_API std::optional<DString> PasswordInAddress(std::string_view text);

/// "db.lab:5432", "[::1]:80", "db.lab", "::1": the port is 0 where there is none. Nothing for what is none of it.
[[nodiscard]] ZELVAR_API std::optional<HostAndPort> ParseHostAndPort(std::string_view text);
/// A whole number from 1 to 65535.
[[nodiscard]] ZELVAR_API std::optional<std::uint16_t> ParsePort(std::string_view text);

} // namespace zelvar
