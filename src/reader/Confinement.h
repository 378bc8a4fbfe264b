#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/reader/SyscallFilter.h"

#include <vector>

namespace zelvar::reader {

/// Takes from this process, before foreign code runs in it, what reading does not need. For good; once, while there is
/// one thread. What the kernel lacks is told to the log, and the reader works without.
///
/// `keep`: the descriptors that stay open, all above 2. Input, output and errors go nowhere; under a sanitizer the
/// errors stay. `readable`: files and folders that a reader of a connection may read, and no others; empty for all.
void Confine(Reach reach, std::vector<int> keep, std::vector<DString> const &readable = {});

} // namespace zelvar::reader
