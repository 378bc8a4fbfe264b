#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/RDIDriver.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include <Messages_generated.h>

namespace zelvar::reader {

/// Requests on their way from the thread that receives to the one that works, and the stop signal of the one that is
/// worked on.
class RequestQueue {
public:
    struct Entry {
        std::unique_ptr<wire::RequestT> request;
        std::unique_ptr<FileDescriptor> file; ///< came with it; null for none
        bool isStopped = false;               ///< before it was begun
    };

    void Add(std::unique_ptr<wire::RequestT> request, std::unique_ptr<FileDescriptor> file);
    /// Stops the request of that number, under way or waiting; an unknown one is past. `onUnderWay` is called if it is
    /// under way, before the next one can be: it may not come back here.
    void Stop(std::uint64_t number, std::function<void()> const &onUnderWay);
    /// Stops what is under way and lets no more be taken.
    void Close();
    /// Whether nothing is under way or waits.
    [[nodiscard]] bool IsIdle();

    /// Waits for the next request, which is then under way. False when closed.
    bool Take(Entry &entry);
    [[nodiscard]] StopSignal const &Signal() const { return m_signal; }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Entry> m_waiting;
    std::uint64_t m_underWay = 0;
    bool m_isBusy = false;
    bool m_isClosed = false;
    StopSignal m_signal = false;
};

} // namespace zelvar::reader
