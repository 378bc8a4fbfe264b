#pragma once

#include "zelvar/connections/Connection.h"
#include "zelvar/connections/Secret.h"
#include "zelvar/data/StopSignal.h"

namespace zelvar {

/// What secrets are told apart by. Never by the connection's name, which changes.
struct SecretKey {
    DString kind{}; ///< "postgresql", "objects" ...
    DString host{}; ///< with port, or bucket, or the name of a source
    DString user{};
    DString key{"password"};                                                 ///< which secret of theirs
    friend auto operator<=>(SecretKey const &, SecretKey const &) = default; // NOLINT(modernize-use-nullptr)
};
/// That of the password of a connection; nothing while it has no address.
[[nodiscard]] ZELVAR_API std::optional<SecretKey> SecretKeyOf(Connection const &connection);

/// What is known of a secret. A value.
struct SecretAnswer {
    enum class Kept { Nowhere, Memory, Keyring, File };
    Kept kept = Kept::Nowhere;
    Secret secret{};
    Secret token{};  ///< of a session, that goes with a key; mostly empty
    DString user{};  ///< account or key ID that the place names besides; may be empty
    DString words{}; ///< why there is none, or why it lies elsewhere: a sentence in the user's language
};

/// Secrets of connections, where their connections say that they are kept. One in a definition of old is known to
/// whoever has read that, see `PasswordInDefinition`. What is kept in memory goes with the process; nothing is ever
/// written to a file of ours. Any thread, though not that of a window: a locked keyring asks its user.
class ZELVAR_API SecretStore {
public:
    static SecretStore &Instance();
    SecretStore(SecretStore const &) = delete;
    SecretStore &operator=(SecretStore const &) = delete;

    /// Looks where `connection.secret` says. An answer of the keyring holds for a while.
    [[nodiscard]] SecretAnswer Find(Connection const &connection, StopSignal const *stop = nullptr) const;
    /// Why the keyring, when it was asked last, did not tell whether it keeps a password; empty if it did. Asks nobody,
    /// so that it may be called on a window's thread, too.
    [[nodiscard]] DString KeyringRefusal(Connection const &connection) const;
    /// Keeps a password where the connection says, or in memory where that cannot be: `words` tells why.
    SecretAnswer Keep(Connection const &connection, Secret const &secret, StopSignal const *stop = nullptr);
    /// From memory and keyring. False if a keyring that is there keeps it all the same.
    bool Forget(Connection const &connection, StopSignal const *stop = nullptr);

private:
    SecretStore();
    ~SecretStore();
    struct Memory;
    [[nodiscard]] SecretAnswer AskKeyring(SecretKey const &key, StopSignal const *stop) const;

    std::unique_ptr<Memory> m_memory; ///< wiped at the end of the process
};

} // namespace zelvar
