#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// Makes the installed module of drivers over GDAL the provider of drivers: it is loaded, with GDAL, at the first
/// question to a driver manager and stays loaded. Without the module there are no drivers, with a line in the log.
ZELVAR_API void UseInstalledDrivers();

} // namespace zelvar
