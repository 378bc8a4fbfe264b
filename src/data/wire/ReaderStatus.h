#pragma once

#include <atomic>
#include <cstdint>

namespace zelvar::wire {

/// The page that a reader shares with its application: what is left of a reader that ends without a word. The reader
/// writes it before it begins with a request that names a file. It begins as zeros.
struct ReaderStatus {
    std::atomic<std::uint64_t> number;  ///< of the request that the rest belongs to; written last
    std::atomic<std::int64_t> modified; ///< of the file on disk, nanoseconds; 0 if there is none
    std::atomic<std::int64_t> size;     ///< bytes; -1 if there is none
    std::atomic<std::int32_t> progress; ///< of that request, in thousandths; below 0 if nothing is known
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

} // namespace zelvar::wire
