#include "zelvar/connections/ConnectionSaving.h"

#include "zelvar/base/Translation.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char const *kStopped = Mark("Stopped.");
constexpr char const *kStillThere = Mark("The keyring still has the password.");
constexpr char const *kInMemory = Mark("The password is kept until the program ends: %s");

bool KeepsTyped(Connection const &connection) {
    return connection.secret == SecretPlace::Keyring || connection.secret == SecretPlace::Ask;
}

/// The password of before, where the connection would not find it any more.
Secret SecretTakenAlong(ConnectionBook::Entry const &former, Connection const &connection, StopSignal const *stop) {
    bool const isFound =
        former.connection.secret == connection.secret && SecretKeyOf(former.connection) == SecretKeyOf(connection);
    if (isFound)
        return {};
    return former.secret.IsEmpty() && KeepsTyped(former.connection)
               ? SecretStore::Instance().Find(former.connection, stop).secret
               : former.secret;
}

/// Another connection to the same server and account has the same password.
bool IsNeeded(Connection const &connection) {
    std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
    return std::any_of(book->Entries().begin(), book->Entries().end(), [&](auto const &row) {
        return row.second.connection.secret == SecretPlace::Keyring &&
               SecretKeyOf(row.second.connection) == SecretKeyOf(connection);
    });
}

bool ForgetUnlessNeeded(Connection const &connection, StopSignal const *stop) {
    return !KeepsTyped(connection) || IsNeeded(connection) || SecretStore::Instance().Forget(connection, stop);
}

} // namespace

SavedConnection SaveWithSecret(ConnectionBook::Entry const *former, Connection const &connection, Secret const &typed,
                               StopSignal const *stop) {
    SavedConnection saved;
    auto const isStopped = [stop] { return stop != nullptr && *stop; };
    // Refused before anybody is asked for a keyring.
    if (former == nullptr && ConnectionBook::Now()->Find(connection.name) != nullptr) {
        saved.change = SaveConnection(connection);
        return saved;
    }
    Secret const secret = !KeepsTyped(connection) ? Secret()
                          : !typed.IsEmpty()      ? typed
                          : former == nullptr     ? Secret()
                                                  : SecretTakenAlong(*former, connection, stop);
    if (!secret.IsEmpty() && !isStopped()) {
        SecretAnswer const kept = SecretStore::Instance().Keep(connection, secret, stop);
        if (connection.secret == SecretPlace::Keyring && kept.kept != SecretAnswer::Kept::Keyring)
            saved.words = Format(Translated(kInMemory), kept.words.c_str());
    }
    if (isStopped()) {
        saved.change.words = Translated(kStopped);
        return saved;
    }
    saved.change = former == nullptr ? SaveConnection(connection) : EditConnection(former->connection.name, connection);
    bool const isElsewhere = former != nullptr && (former->connection.secret != connection.secret ||
                                                   SecretKeyOf(former->connection) != SecretKeyOf(connection));
    if (saved.change.isDone && isElsewhere && former->connection.secret == SecretPlace::Keyring)
        std::ignore = ForgetUnlessNeeded(former->connection, stop); // it is of no use to anybody
    return saved;
}

SavedConnection RemoveWithSecret(DString const &name, bool forget, StopSignal const *stop) {
    std::shared_ptr<ConnectionBook const> const before = ConnectionBook::Now();
    SavedConnection removed{.change = RemoveConnection(name)};
    ConnectionBook::Entry const *const entry = before->Find(name);
    if (removed.change.isDone && forget && entry != nullptr && !ForgetUnlessNeeded(entry->connection, stop))
        removed.words = Translated(kStillThere);
    return removed;
}

} // namespace zelvar
