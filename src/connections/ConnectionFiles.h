#pragma once

#include "zelvar/connections/Connection.h"

namespace zelvar {

/// What to do with a connection whose name another one has.
enum class IfThere { Refuse, KeepBoth, Replace, Skip };

/// What became of a change to the files of definitions.
struct ConnectionChange {
    bool isDone = false;          ///< false: the files are as they were
    DString words{};              ///< why not, a sentence in the user's language
    std::vector<DString> names{}; ///< of the connections that were written, as they are called now
};

// Changes to the user's definitions. The files are locked, read anew, changed and written whole: what another process
// has written meanwhile stays, and so does all in a definition that is not known here. A damaged file is never written.
// The main file gets what is new. Any thread.

/// A faulty connection is refused with what is wrong with it.
[[nodiscard]] ZELVAR_API ConnectionChange SaveConnection(Connection const &connection,
                                                         IfThere ifThere = IfThere::Refuse);
/// Changes the one called `name`, which may get another name.
[[nodiscard]] ZELVAR_API ConnectionChange EditConnection(DString const &name, Connection const &connection);
/// Gives the one called `name` another name and leaves all else in it as it is.
[[nodiscard]] ZELVAR_API ConnectionChange RenameConnection(DString const &name, DString const &newName);
/// Lets the one called `name` reach another host, too. Done, and nothing written, if it may already.
[[nodiscard]] ZELVAR_API ConnectionChange AllowHost(DString const &name, HostAndPort const &host);
/// Another definition that says the same, under a name that is free.
[[nodiscard]] ZELVAR_API ConnectionChange DuplicateConnection(DString const &name);
/// All definitions of that name.
[[nodiscard]] ZELVAR_API ConnectionChange RemoveConnection(DString const &name);

/// Writes definitions to a file that others can import. Never a secret: a definition of old loses its password, and one
/// whose address holds it in a place that is not known is refused.
[[nodiscard]] ZELVAR_API ConnectionChange ExportConnections(std::vector<DString> const &names, DString const &file);
/// Which connections of such a file have names that others have here. `names` are theirs; not done if it cannot be
/// read.
[[nodiscard]] ZELVAR_API ConnectionChange ConflictsOfImport(DString const &file);
/// Takes over the definitions of such a file, whole or not at all. With `Refuse` the words name those that are there.
[[nodiscard]] ZELVAR_API ConnectionChange ImportConnections(DString const &file, IfThere ifThere = IfThere::Refuse);

} // namespace zelvar
