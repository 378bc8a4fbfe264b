#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// Starts what the library's drawing and data access stand on: to be called once, before any window of the library is
/// made, with a `QApplication` in place. Calling it twice does no harm.
///
/// Data is read in processes of their own from then on; an application that wants it otherwise calls
/// `UseOwnProcessDrivers` behind it, or `UseReaderDrivers` with settings of its own.
ZELVAR_API void ZelvarInit();
/// Ends it: once, at the end, after the last window of the library is gone.
ZELVAR_API void ZelvarShutdown();

} // namespace zelvar
