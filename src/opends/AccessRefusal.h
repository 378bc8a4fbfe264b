#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

class DError;

/// Tells the user that a place may not be entered. In all of these the place is shown as lists show names: what would
/// turn the direction of the words behind it, or break their line, is written out.
void TellNoAccess(DString const &place);
/// Tells the user that what was named is not there, and why if `error` is set.
void TellNoPath(DString const &path, DError const &error);

} // namespace zelvar
