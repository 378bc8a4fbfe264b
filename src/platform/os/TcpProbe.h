#pragma once

#include "zelvar/base/DString.h"

#include <system_error>

namespace zelvar::platform {

/// Why the file server of "[user@]host[:port]" takes no connection within `timeoutMs`, if it takes none; port 445 by
/// default. The name goes through the system's resolver.
[[nodiscard]] std::error_code TryToConnect(DString const &authority, int timeoutMs);

} // namespace zelvar::platform
