#pragma once

#include "zelvar/connections/ConnectionAddress.h"
#include "zelvar/data/Connection.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace zelvar {

class XMLNode;

/// Where the password or key of a connection is kept.
enum class SecretPlace {
    None,
    Keyring,    ///< the desktop's, or this process's memory where there is none
    Ask,        ///< this process's memory alone
    Profile,    ///< the service's own profiles: of AWS, or those of PostgreSQL's services
    File,       ///< ~/.pgpass, ~/.netrc
    Definition, ///< in the definition's text, as definitions of old have it; nothing of ours puts it there
};

/// A connection that a user has made: what its definition says. Never its secret. A value.
struct ZELVAR_API Connection {
    DString name{};
    ConnectionKind kind = ConnectionKind::PostgreSql;
    /// What it was told, by the keys of `FieldsOf`; an empty value is as none.
    std::map<DString, DString> fields{};
    SecretPlace secret = SecretPlace::None;
    std::vector<HostAndPort> allow{};  ///< hosts that may be reached besides its own
    std::chrono::seconds timeLimit{0}; ///< to connect; 0 for the usual one

    [[nodiscard]] DString Field(DString const &key) const;
    /// Where it leads; nothing while a field is missing that the address needs.
    [[nodiscard]] std::optional<ConnectionAddress> Address() const;
    /// What an address says of a connection of that kind goes to the fields.
    void TakeAddress(ConnectionAddress const &address);

    /// What a definition says; nothing for one without a name or an address. Definitions of old are read as well:
    /// without `Connection`, with the password among the parameters or in the address.
    [[nodiscard]] static std::optional<Connection> FromNode(XMLNode const &definition);
    /// A new definition.
    [[nodiscard]] std::unique_ptr<XMLNode> ToNode() const;
    /// Writes what has changed into a definition: what is not known here stays, and the address as it is written while
    /// it leads to the same place. With another place for the secret than the definition no password stays in it.
    void WriteTo(XMLNode &definition) const;
};

/// The password in a definition of old; nothing for none.
[[nodiscard]] ZELVAR_API std::optional<DString> PasswordInDefinition(XMLNode const &definition);

/// What a kind of connection is called.
struct ConnectionKindWords {
    ConnectionKind kind;
    char const *word;   ///< in commands
    char const *driver; ///< that definitions name
    char const *label;  ///< English, to be translated
};
[[nodiscard]] ZELVAR_API std::span<ConnectionKindWords const> ConnectionKinds();
[[nodiscard]] ZELVAR_API ConnectionKindWords const &WordsOf(ConnectionKind kind);
/// "keyring", "ask" ...: as it stands in definitions.
[[nodiscard]] ZELVAR_API char const *SecretPlaceText(SecretPlace place);
[[nodiscard]] ZELVAR_API std::optional<SecretPlace> ParseSecretPlace(std::string_view text);

} // namespace zelvar
