#include "zelvar/data/PlaceCheck.h"

#include "zelvar/data/RequestScope.h"
#include "zelvar/platform/os/ShellNamespace.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace zelvar {

namespace {

std::atomic<bool (*)(DString const &)> g_check{nullptr};

/// A question to a server, and its answer. The thread that asks may outlive who waits.
class ServerQuestion {
public:
    void Ask(DString const &address) {
        bool const answers = platform::ShellNamespace::Current().DoesServerAnswer(address);
        std::lock_guard const lock(m_mutex);
        m_answer = answers;
        m_answered.notify_all();
    }
    /// False also if the scope of the calling thread wants to go on without.
    bool Wait() {
        constexpr std::chrono::milliseconds look{10};
        RequestScope *const scope = RequestScope::Current();
        std::unique_lock lock(m_mutex);
        while (!m_answered.wait_for(lock, look, [this] { return m_answer.has_value(); })) {
            lock.unlock(); // the question may show windows
            if (scope != nullptr && (scope->IsStopped() || scope->TimeLeft().value_or(look).count() <= 0)) {
                scope->SetUnanswered();
                return false;
            }
            lock.lock();
        }
        return *m_answer;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_answered;
    std::optional<bool> m_answer;
};

bool DoesServerAnswer(DString const &address) {
    auto const question = std::make_shared<ServerQuestion>();
    try {
        std::thread([question, address] { question->Ask(address); }).detach();
    } catch (std::system_error const &) {
        question->Ask(address); // no thread to be had
    }
    return question->Wait();
}

} // namespace

bool DoesPlaceAnswer(DString const &path) {
    if (platform::IsSmbAddress(path))
        return DoesServerAnswer(path);
    auto *const check = g_check.load();
    return check == nullptr || check(path);
}

void SetPlaceCheck(bool (*check)(DString const &path)) { g_check = check; }

} // namespace zelvar
