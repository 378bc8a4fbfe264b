#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/data/StopSignal.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zelvar {

/// A piece of work for a window, on a thread of its own: what it reports is kept, and a message tells the window to
/// look. It lives as long as its thread: a window that closes while a server or a keyring does not answer lets go of it
/// and does not wait.
class Errand final : public DThread, public std::enable_shared_from_this<Errand> {
public:
    /// Values alone: it may outlive the window.
    using Work = std::function<void(StopSignal const &stop)>;

    /// Null if no thread is to be had. `message` is posted once more when the work has ended.
    static std::shared_ptr<Errand> Start(Work work, platform::MessageTarget target, platform::MessageId message);
    Errand(Errand const &) = delete;
    Errand &operator=(Errand const &) = delete;
    ~Errand() override = default;

    /// The work is to end soon.
    void Stop() { m_stop = true; }
    [[nodiscard]] bool IsStopped() const { return m_stop; }
    [[nodiscard]] bool IsAtWork() const { return m_isAtWork; }
    /// Stops it, and what it reports is for nobody. Does not wait.
    void Release();
    void Run() override;

private:
    Errand(Work work, platform::MessageTarget target, platform::MessageId message)
        : m_work(std::move(work)), m_target(std::move(target)), m_message(message) {}

    Work m_work;
    platform::MessageTarget m_target;
    platform::MessageId m_message;
    StopSignal m_stop{false};
    std::atomic<bool> m_isAtWork{true};
    std::shared_ptr<Errand> m_self; ///< while the thread is at work; its own, once that has begun
};

/// Values on their way from a worker to a window. Any thread.
template <class Value>
class Handover {
public:
    void Put(Value value) {
        std::lock_guard const lock(m_mutex);
        m_values.push_back(std::move(value));
    }
    [[nodiscard]] std::vector<Value> TakeAll() {
        std::lock_guard const lock(m_mutex);
        return std::exchange(m_values, {});
    }

private:
    std::mutex m_mutex;
    std::vector<Value> m_values;
};

} // namespace zelvar
