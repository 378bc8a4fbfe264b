#pragma once

#include "zelvar/connections/Connection.h"

namespace zelvar {

/// What a connection of a kind can be told: a field of the page, an option of the command, a place in the definition.
struct ConnectionField {
    /// Where a definition keeps it.
    enum class Place { Address, Attribute };
    /// What it may say.
    enum class Rule { Any, Host, Port, WebAddress, Bucket, Endpoint, FullPath, Fingerprint, Choice };

    ConnectionKind kind;
    char const *key;   ///< in definitions and commands
    char const *label; ///< English, to be translated
    Place place = Place::Attribute;
    Rule rule = Rule::Any;
    char const *choices = ""; ///< of `Choice`: "disable|allow"; the first holds where nothing is said
};

/// In the order of the page.
[[nodiscard]] ZELVAR_API std::vector<ConnectionField> FieldsOf(ConnectionKind kind);

/// Whether a text can be the name or the number of a host.
[[nodiscard]] ZELVAR_API bool IsHostName(std::string_view text);

/// What is wrong with a field, in words for people. "name" is a field here, too.
struct ConnectionFault {
    DString field{};
    DString words{}; ///< a sentence in the user's language
};
/// Empty for a connection that can be kept and tried.
[[nodiscard]] ZELVAR_API std::vector<ConnectionFault> FaultsOf(Connection const &connection);

} // namespace zelvar
