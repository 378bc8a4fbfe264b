#pragma once

#include "zelvar/base/DString.h"

#include <vector>

namespace zelvar::reader {

/// Makes the modules the providers of this process's drivers, in order. A module that cannot be loaded leaves a line in
/// the log. They stay loaded.
void UseModules(std::vector<DString> modules);

} // namespace zelvar::reader
