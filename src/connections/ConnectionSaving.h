#pragma once

#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/ConnectionFiles.h"

namespace zelvar {

/// What became of a connection and its password.
struct SavedConnection {
    ConnectionChange change{};
    DString words{}; ///< why the password lies elsewhere than asked; empty if it does not
};

// Definitions and secrets together. They ask the keyring, which may ask its user, and wait for other processes that
// change the files: not on a window's thread. Neither begins what `stop` ends before.

/// Keeps the password, then writes the definition: of a new connection without `former`. An empty `typed` leaves the
/// password as it is; one that the edited connection would not find any more, as its server, account or place has
/// changed, is taken along.
[[nodiscard]] ZELVAR_API SavedConnection SaveWithSecret(ConnectionBook::Entry const *former,
                                                        Connection const &connection, Secret const &typed,
                                                        StopSignal const *stop = nullptr);
/// Removes the definitions of that name; with `forget` the password, too, unless another connection needs it.
[[nodiscard]] ZELVAR_API SavedConnection RemoveWithSecret(DString const &name, bool forget,
                                                          StopSignal const *stop = nullptr);

} // namespace zelvar
