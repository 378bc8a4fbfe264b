#pragma once

#include "zelvar/connections/ConnectionListing.h"

#include <functional>

namespace zelvar {

/// What is found out about a connection, one after the other.
enum class TrialStep { Name, Connection, Password, Encryption, Login, Listing, FirstItem };
enum class TrialState { Works, Failed, Stopped };

struct TrialResult {
    TrialStep step = TrialStep::Name;
    TrialState state = TrialState::Works;
    DString words{}; ///< a sentence in the user's language: the cause, then what to do
    std::chrono::milliseconds took{0};
    DString accepts{}; ///< fingerprint of a certificate that would let it go on if the user accepted it; empty for none
    std::optional<HostAndPort> allows{}; ///< a host that would, if it may be reached, too
};
/// "name", "connection" ..., in the user's language.
[[nodiscard]] ZELVAR_API char const *TrialStepInWords(TrialStep step);

/// Tries a connection step by step, from this process: is its server known, does it take connections, is there a
/// password, is its certificate trusted, does it know the user, can it be listed, can the first thing in it be read. A
/// step that does not apply is left out, and after one that fails none follows. Where a proxy stands between, its
/// server is nothing that this process could ask. What is not known before the listing, which a reader does, comes with
/// its end. Not on a window's thread.
class ZELVAR_API ConnectionTrial {
public:
    /// Lists the connection; nothing if nobody can list its kind.
    using Listing = std::function<std::optional<ListedConnection>()>;
    using OnResult = std::function<void(TrialResult const &)>;

    ConnectionTrial(ConnectionBook::Entry entry, Listing listing);
    /// True if all steps went well. `stop` ends the present one at once.
    bool Run(OnResult const &onResult, StopSignal const *stop = nullptr) const;

private:
    ConnectionBook::Entry m_entry;
    Listing m_listing;
};

} // namespace zelvar
