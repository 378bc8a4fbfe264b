#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/data/ServerCertificate.h"

namespace zelvar {

/// What came of opening and listing a connection. A value.
struct ListedConnection {
    bool isStopped = false;
    DError failure{};                               ///< why it is not listed; not set if it is
    std::optional<ServerCertificate> certificate{}; ///< that is not trusted, where the failure is about it
    std::size_t folders = 0;
    std::size_t images = 0;
    std::size_t tables = 0;
    std::size_t others = 0;
    bool hasMore = false;  ///< than were counted
    DString first{};       ///< the name of what was looked at in it; empty if there is nothing
    DString firstWords{};  ///< what that is, a sentence in the user's language
    DError firstFailure{}; ///< of its server; not set for what is no image
    [[nodiscard]] bool IsEmpty() const { return folders + images + tables + others == 0; }
};

/// Opens a connection as it is told here, saved or not, and lists it as a dialog does: through its reader. Of a saved
/// one, called `definition`, whatever else its definition says holds, too. Nothing if there is no driver for the kind.
/// Takes as long as the server does; not on a window's thread.
[[nodiscard]] ZELVAR_API std::optional<ListedConnection>
ListConnection(ConnectionBook::Entry const &entry, DString const &definition, StopSignal const *stop);

/// While it lives, readers are told this of the address, whatever the definitions say. Any thread.
class ZELVAR_API TriedConnection {
public:
    explicit TriedConnection(ConnectionBook::Entry entry);
    ~TriedConnection();
    TriedConnection(TriedConnection const &) = delete;
    TriedConnection &operator=(TriedConnection const &) = delete;

    /// The one that holds the address, tried last; nothing for none.
    [[nodiscard]] static std::optional<ConnectionBook::Entry> FindByAddress(std::string_view address);

private:
    ConnectionBook::Entry m_entry;
};

} // namespace zelvar
