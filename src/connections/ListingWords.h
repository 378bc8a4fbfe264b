#pragma once

#include "zelvar/connections/ConnectionTrial.h"

namespace zelvar {

/// The steps that a listing has decided, in their order: encryption, login, listing, first item. Those that do not
/// apply are left out, and none follows one that failed; never empty. Without times.
[[nodiscard]] std::vector<TrialResult> ListingInSteps(Connection const &connection, ListedConnection const &listed);

} // namespace zelvar
