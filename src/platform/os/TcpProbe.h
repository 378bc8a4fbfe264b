#pragma once

#include "zelvar/base/DString.h"

namespace zelvar::platform {

/// True if the file server of "[user@]host[:port]" takes a connection within `timeoutMs`; port 445 by default. The
/// name goes through the system's resolver.
[[nodiscard]] bool AcceptsConnections(DString const &authority, int timeoutMs);

} // namespace zelvar::platform
