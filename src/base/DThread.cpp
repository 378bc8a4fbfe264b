#include "zelvar/base/DThread.h"

#include "zelvar/base/Report.h"

#include <exception>
#include <system_error>

namespace zelvar {

struct DThread::State {
    std::mutex mutex;
    std::condition_variable ended;
    bool running = false;
};

DThread::DThread() : m_state(std::make_shared<State>()) {}

DThread::~DThread() { Finish(); }

bool DThread::Start() {
    {
        std::lock_guard const lock(m_state->mutex);
        if (m_state->running)
            return false;
        m_state->running = true;
    }
    Finish();
    try {
        // The state is held by the thread too: an abandoned one tells its end to a state that may have no other owner.
        m_thread = std::thread([this, state = m_state] {
            try {
                Run();
            } catch (std::exception const &failure) {
                Report::TraceMessage(1, "a worker ended with an exception: %s", failure.what());
            } catch (...) {
                Report::TraceMessage(1, "a worker ended with an exception");
            }
            std::lock_guard const lock(state->mutex);
            state->running = false;
            state->ended.notify_all();
        });
    } catch (std::system_error const &failure) {
        Report::TraceMessage(1, "no thread could be made: %s", failure.what());
        std::lock_guard const lock(m_state->mutex);
        m_state->running = false;
        return false;
    }
    return true;
}

bool DThread::IsRunning() const {
    std::lock_guard const lock(m_state->mutex);
    return m_state->running;
}

bool DThread::Wait(std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_state->mutex);
    return m_state->ended.wait_for(lock, timeout, [this] { return !m_state->running; });
}

void DThread::Finish() {
    if (m_thread.joinable())
        m_thread.join();
}

void DThread::Abandon() {
    if (m_thread.joinable())
        m_thread.detach();
}

} // namespace zelvar
