#pragma once

#include "zelvar/base/Export.h"

#include <memory>

#include <Messages_generated.h>

namespace zelvar::wire {

/// Writes the order into memory without a name that nobody can change any more, readable for its user alone; the
/// descriptor is the caller's. -1 if there is no memory.
[[nodiscard]] ZELVAR_API int SealOrder(ConnectionOrderT const &order);
/// Takes `file` over and reads what stands in it; null unless it is such memory. What it held is wiped from the
/// process but for the order itself.
[[nodiscard]] ZELVAR_API std::unique_ptr<ConnectionOrderT> UnsealOrder(int file);

} // namespace zelvar::wire
