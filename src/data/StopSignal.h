#pragma once

#include <atomic>

namespace zelvar {

/// Asks a long read to stop: set from any thread, polled by the driver.
using StopSignal = std::atomic<bool>;

} // namespace zelvar
