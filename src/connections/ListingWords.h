#pragma once

#include "zelvar/connections/ConnectionTrial.h"

namespace zelvar {

/// The steps that a listing has decided, in their order: encryption, login, listing, first item. Those that do not
/// apply are left out, and none follows one that failed; never empty. Without times.
[[nodiscard]] std::vector<TrialResult> ListingInSteps(Connection const &connection, ListedConnection const &listed);

/// What is wrong with the login where that is why a connection failed: a sentence in the user's language, empty for any
/// other cause.
[[nodiscard]] ZELVAR_API DString LoginFailureInWords(Connection const &connection, DError const &error);

} // namespace zelvar
