#pragma once

#include "zelvar/reader/SyscallFilter.h"

#include <initializer_list>

namespace zelvar::reader {

/// Takes from this process, before foreign code runs in it, what reading does not need. For good; once, while there is
/// one thread. What the kernel lacks is told to the log, and the reader works without.
///
/// `keep`: the descriptors that stay open, all above 2. Input, output and errors go nowhere; under a sanitizer the
/// errors stay.
void Confine(Reach reach, std::initializer_list<int> keep);

} // namespace zelvar::reader
