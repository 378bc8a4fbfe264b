#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/reader/SyscallFilter.h"

#include <vector>

namespace zelvar::reader {

/// Takes from this thread, and those that it starts, for good: to write, make, cut, move or remove any file but the
/// null device; signals to other processes, where the kernel knows how; but for readers that connect by themselves also
/// connections; where `readable` names places, to read anything else. False where the kernel has no such barrier.
[[nodiscard]] bool RaiseWriteBarrier(Reach reach, std::vector<DString> const &readable);

} // namespace zelvar::reader
