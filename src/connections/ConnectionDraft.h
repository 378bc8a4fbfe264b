#pragma once

#include "zelvar/connections/ConnectionFields.h"
#include "zelvar/connections/ConnectionPasting.h"

namespace zelvar {

/// A connection while its user describes it: texts, right or wrong, as they stand on a page. What was said for one kind
/// stays while another one is looked at. A value.
class ZELVAR_API ConnectionDraft {
public:
    /// Of a database that keeps its password where most do.
    ConnectionDraft() = default;
    explicit ConnectionDraft(Connection const &connection);

    [[nodiscard]] ConnectionKind Kind() const { return m_kind; }
    /// What the fields of both say alike goes along where the new kind says nothing yet.
    void SetKind(ConnectionKind kind);
    [[nodiscard]] DString Text(DString const &key) const;
    void SetText(DString const &key, DString const &text);

    DString name{};
    SecretPlace secret = SecretPlace::Keyring; ///< the usual one of a kind follows the kind
    DString allow{};                           ///< hosts, between blanks, commas or semicolons
    DString timeLimit{};                       ///< whole seconds, from 1 to 3600; empty for the usual time

    /// What can be read of it: texts that are wrong are as they stand, or left out.
    [[nodiscard]] Connection ToConnection() const;
    /// With "allow" and "timeLimit" among the fields.
    [[nodiscard]] std::vector<ConnectionFault> Faults() const;
    /// The kind and its fields, as far as the text told them; the name and what else is not in an address stay. Of
    /// what may be a web folder as well as a map service the kind stays, too.
    void Take(PastedConnection const &pasted);

private:
    ConnectionKind m_kind = ConnectionKind::PostgreSql;
    std::map<ConnectionKind, std::map<DString, DString>> m_texts{};
};

/// The places where a connection of that kind can keep its secret, the usual one first. Never the definition.
[[nodiscard]] ZELVAR_API std::vector<SecretPlace> SecretPlacesOf(ConnectionKind kind);
/// "in the keyring": where that is, of a connection of that kind, in the user's language.
[[nodiscard]] ZELVAR_API DString SecretPlaceInWords(SecretPlace place, ConnectionKind kind);
/// What a field's choice means, in the user's language; a word of the field's own as it is.
[[nodiscard]] ZELVAR_API DString ChoiceInWords(ConnectionField const &field, DString const &choice);
/// Whether most connections do without that field.
[[nodiscard]] ZELVAR_API bool IsRareField(ConnectionField const &field);
/// What a connection may be called: "field (db.lab)", "cloud.lab/dav". Empty while it leads nowhere.
[[nodiscard]] ZELVAR_API DString SuggestedName(Connection const &connection);

} // namespace zelvar
