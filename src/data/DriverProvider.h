#pragma once

#include "zelvar/base/Export.h"

#include <functional>

namespace zelvar {

/// Where drivers come from: called once, at the first question to either manager, and adds to both. `library/` sets the
/// one that loads the GDAL module; a program may set its own before the first use.
using DriverProvider = std::function<void()>;
/// `isSlow`: it takes long enough to be worth putting off, see `AreDriversPending`.
ZELVAR_API void SetDriverProvider(DriverProvider provider, bool isSlow = false);
/// Runs the provider unless it has run; others wait until it is through. Any thread.
ZELVAR_API void EnsureDrivers();
/// Whether the first question to a manager would wait for a slow provider.
[[nodiscard]] ZELVAR_API bool AreDriversPending();
/// Lets the provider run again at the next question. For tests.
ZELVAR_API void ForgetDrivers();
/// `forget` is called then: what the provider added there, it adds anew. It lives as long as the process.
ZELVAR_API void OnForgetDrivers(std::function<void()> forget);

} // namespace zelvar
