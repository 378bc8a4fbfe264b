#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/data/StopSignal.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <tuple>
#include <utility>

namespace zelvar {

/// A thread that works for a window on what was asked last. It begins when there is something to do and ends when there
/// is nothing more.
///
/// It lives as long as its thread: a window that closes while a file system does not answer lets go of it and does not
/// wait. `WorkOnNext` belongs to the worker's thread, all else to the user-interface thread.
class ZELVAR_API WindowWorker : public DThread, public std::enable_shared_from_this<WindowWorker> {
public:
    ~WindowWorker() override = default;
    WindowWorker(WindowWorker const &) = delete;
    WindowWorker &operator=(WindowWorker const &) = delete;

    /// Stops what is under way and forgets what waits. Does not wait.
    virtual void Cancel() = 0;
    /// The window goes: what is under way is stopped and its answer is dropped. Does not wait.
    void Release() {
        Cancel();
        Abandon(); // the thread holds this object until it has ended
    }
    void Run() final;

protected:
    WindowWorker() = default;

    /// Whether a thread is at work; under the mutex.
    [[nodiscard]] bool IsRunning() const { return m_running; }
    /// Has a thread work. `keep` is called under the mutex and keeps what is to be done; false if that is nothing.
    template <class Keep>
    void Hand(Keep const &keep) {
        {
            std::lock_guard const lock(m_mutex);
            if (!keep() || m_running)
                return; // the thread at work takes it
            m_running = true;
            m_self = shared_from_this();
        }
        Begin();
    }
    /// Takes what waits, with `take`, called under the mutex. Where that says false the thread ends, in one step with
    /// the look, so that nothing is ever left behind.
    template <class Take>
    [[nodiscard]] bool TakeNext(Take const &take) {
        std::lock_guard const lock(m_mutex);
        if (take())
            return true;
        m_running = false;
        m_self.reset(); // the body still holds it
        m_idle.notify_all();
        return false;
    }
    /// The same for one question that waits: moves it out, and takes the stop of the one before back.
    template <class Question>
    [[nodiscard]] std::optional<Question> TakeNext(std::optional<Question> &pending, StopSignal &stop) {
        std::optional<Question> question;
        std::ignore = TakeNext([&] {
            question = std::exchange(pending, std::nullopt);
            if (question)
                stop = false;
            return question.has_value();
        });
        return question;
    }
    /// Does what waits; false if there is nothing.
    virtual bool WorkOnNext() = 0;

    mutable std::mutex m_mutex;             ///< for what the two threads share
    mutable std::condition_variable m_idle; ///< told when no thread is at work any more

private:
    void Begin();

    bool m_running = false;
    std::shared_ptr<WindowWorker> m_self; ///< while the thread is at work
};

} // namespace zelvar
