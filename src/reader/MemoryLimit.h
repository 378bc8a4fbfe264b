#pragma once

#include <cstdint>

namespace zelvar::reader {

/// Holds down, while it lives, what this process may take beyond what it has. No limit with 0, nor under a sanitizer.
class MemoryLimit {
public:
    /// `more`: bytes.
    explicit MemoryLimit(std::uint64_t more);
    ~MemoryLimit();
    MemoryLimit(MemoryLimit const &) = delete;
    MemoryLimit &operator=(MemoryLimit const &) = delete;
};

} // namespace zelvar::reader
