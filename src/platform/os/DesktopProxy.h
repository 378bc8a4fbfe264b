#pragma once

#include "zelvar/platform/os/Dialing.h"

namespace zelvar::platform {

/// The proxy that the desktop's settings name for an address, as "http://proxy.lab:3128": the first of kind http, else
/// the first there is. Empty where none is to be used, and without GIO, which knows the settings of each desktop. Where
/// these name a script, GIO fetches and runs it: on a thread of its own, that is left behind when the patience ends.
[[nodiscard]] DString FindDesktopProxy(DString const &address, Patience const &patience);

} // namespace zelvar::platform
