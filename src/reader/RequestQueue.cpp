#include "zelvar/reader/RequestQueue.h"

#include <algorithm>
#include <utility>

namespace zelvar::reader {

void RequestQueue::Add(std::unique_ptr<wire::RequestT> request, std::unique_ptr<FileDescriptor> file) {
    std::lock_guard const lock(m_mutex);
    m_waiting.push_back({.request = std::move(request), .file = std::move(file)});
    m_changed.notify_one();
}

void RequestQueue::Stop(std::uint64_t number, std::function<void()> const &onUnderWay) {
    std::lock_guard const lock(m_mutex);
    if (m_isBusy && m_underWay == number) {
        m_signal = true;
        return onUnderWay();
    }
    auto const at = std::ranges::find(m_waiting, number, [](Entry const &entry) { return entry.request->number; });
    if (at != m_waiting.end())
        at->isStopped = true;
}

void RequestQueue::Close() {
    std::lock_guard const lock(m_mutex);
    m_isClosed = true;
    m_signal = true;
    m_changed.notify_one();
}

bool RequestQueue::IsIdle() {
    std::lock_guard const lock(m_mutex);
    return !m_isBusy && m_waiting.empty();
}

bool RequestQueue::Take(Entry &entry) {
    std::unique_lock lock(m_mutex);
    m_isBusy = false;
    m_changed.wait(lock, [this] { return m_isClosed || !m_waiting.empty(); });
    if (m_isClosed)
        return false;
    entry = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_underWay = entry.request->number;
    m_isBusy = true;
    m_signal = entry.isStopped;
    return true;
}

} // namespace zelvar::reader
