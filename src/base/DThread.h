#pragma once

#include "zelvar/base/Export.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace zelvar {

/// Recursive lock: a lock inside a lock of the same thread is allowed.
class DMutex {
public:
    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a `DMutex` for its own lifetime.
class DSingleLock {
public:
    explicit DSingleLock(DMutex &mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~DSingleLock() { m_mutex.Unlock(); }
    DSingleLock(DSingleLock const &) = delete;
    DSingleLock &operator=(DSingleLock const &) = delete;

private:
    DMutex &m_mutex;
};

/// A worker: `Run` is executed on a thread of its own by `Start`, or called directly by those that need no thread.
///
/// `Run` must touch nothing that dies before the thread ends. The derived class stops its body and calls `Finish`
/// before it is destroyed, or `Abandon`: then the object must be left to live until the thread has ended.
class ZELVAR_API DThread {
public:
    DThread();
    DThread(DThread const &) = delete;
    DThread &operator=(DThread const &) = delete;
    virtual ~DThread();

    virtual void Run() = 0;

    /// Starts `Run` on a new thread. False if the former thread still runs or none could be made.
    bool Start();
    /// True until `Run` has returned.
    [[nodiscard]] bool IsRunning() const;
    /// Waits for the end of `Run`; false when the time was over first. Does not stop anything by itself.
    bool Wait(std::chrono::milliseconds timeout);
    /// Joins a thread whose body has ended or is about to.
    void Finish();
    /// Lets go of a thread that did not end in time. It goes on by itself; the object must outlive it.
    void Abandon();

private:
    struct State;
    std::shared_ptr<State> m_state;
    std::thread m_thread;
};

} // namespace zelvar
