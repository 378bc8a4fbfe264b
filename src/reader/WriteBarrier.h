#pragma once

#include "zelvar/reader/SyscallFilter.h"

namespace zelvar::reader {

/// Takes from this thread, and those that it starts, for good: to write, make, cut, move or remove any file but the
/// null device; signals to other processes, where the kernel knows how; for local readers also connections.
/// False where the kernel has no such barrier.
[[nodiscard]] bool RaiseWriteBarrier(Reach reach);

} // namespace zelvar::reader
