#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace zelvar {

/// A lock that its thread may take again. Unlike the library's it may be released in the child of a fork: there the
/// thread that forked is another one for the system, but the same for itself.
class ForkableMutex {
public:
    void lock() {
        if (m_owner.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
            m_mutex.lock();
            m_owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ++m_count;
    }
    void unlock() {
        if (--m_count > 0)
            return;
        m_owner.store(std::thread::id(), std::memory_order_relaxed);
        m_mutex.unlock();
    }

private:
    std::mutex m_mutex;
    std::atomic<std::thread::id> m_owner{}; ///< only its own thread ever finds itself here
    int m_count = 0;                        ///< guarded by `m_mutex`
};

} // namespace zelvar
