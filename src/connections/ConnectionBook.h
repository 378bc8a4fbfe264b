#pragma once

#include "zelvar/connections/SecretStore.h"

#include <memory>

namespace zelvar {

/// The connections that the user's definitions describe, as they lay in the files when it was read. A value, which any
/// thread may look into.
class ZELVAR_API ConnectionBook {
public:
    struct Entry {
        Connection connection{};
        Secret secret{}; ///< that a definition of old holds; else empty
        bool isVisible = true;
    };

    /// Reads the directory of definitions. Files that cannot be read are left out.
    [[nodiscard]] static ConnectionBook Read();
    /// The same, read once for as long as the files stay as they are.
    [[nodiscard]] static std::shared_ptr<ConnectionBook const> Now();

    /// By name. Of one name the definition that was read last.
    [[nodiscard]] std::map<DString, Entry> const &Entries() const & { return m_entries; }
    void Entries() const && = delete;
    [[nodiscard]] Entry const *Find(DString const &name) const;
    /// The connection that an address, or that of something in it, belongs to: of several the one with the longest
    /// address, and of those with the same the one that was used last, see `NoteUseOf`. Null if there is none.
    [[nodiscard]] Entry const *FindByAddress(std::string_view address) const;

private:
    std::map<DString, Entry> m_entries{};
};

/// "No connection for db.lab:5432 is defined.": in the user's language; empty for what is no address of a connection.
[[nodiscard]] ZELVAR_API DString MissingConnectionInWords(std::string_view address);

/// What tells a connection's readers from others: the id of its terms. Empty for one without an address.
[[nodiscard]] ZELVAR_API DString ConnectionIdOf(Connection const &connection);
/// What a reader for the connection may reach and is told. Asks for its secret: not on a window's thread.
[[nodiscard]] ZELVAR_API ConnectionTerms MakeTerms(ConnectionBook::Entry const &entry,
                                                   StopSignal const *stop = nullptr);

/// From now on readers find the terms of the user's connections. At the start of a program.
ZELVAR_API void UseDefinedConnections();

} // namespace zelvar
