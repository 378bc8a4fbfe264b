#include "zelvar/reader/MemoryLimit.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/reader/Sanitizers.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <fcntl.h>
#include <sys/resource.h>

namespace zelvar::reader {

namespace {

/// Bytes of data and stacks, which is what the limit counts; 0 if the system does not tell.
std::uint64_t HeldNow() {
    std::array<char, 256> text{};
    FileDescriptor const file(open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
    if (read(file.Get(), text.data(), text.size() - 1) <= 0)
        return 0;
    unsigned long long pages = 0; // the sixth figure
    if (std::sscanf(text.data(), "%*u %*u %*u %*u %*u %llu", &pages) != 1)
        return 0;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

void SetLimit(std::uint64_t bytes) {
    rlimit limit{};
    if (kIsSanitized || getrlimit(RLIMIT_DATA, &limit) != 0)
        return;
    limit.rlim_cur = std::min<rlim_t>(bytes, limit.rlim_max);
    setrlimit(RLIMIT_DATA, &limit);
}

} // namespace

MemoryLimit::MemoryLimit(std::uint64_t more) {
    std::uint64_t const held = more == 0 ? 0 : HeldNow();
    if (held != 0)
        SetLimit(more > RLIM_INFINITY - held ? RLIM_INFINITY : held + more);
}

MemoryLimit::~MemoryLimit() { SetLimit(RLIM_INFINITY); }

} // namespace zelvar::reader
