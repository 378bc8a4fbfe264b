#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar {

// Several texts in one line of the settings, whatever bytes they hold.
[[nodiscard]] DString JoinFields(std::vector<DString> const &fields);
[[nodiscard]] std::vector<DString> SplitFields(DString const &text);

/// As it may be stored: an address without its password. A path stays, whatever its name looks like.
[[nodiscard]] DString StorablePlace(DString const &place);

} // namespace zelvar
