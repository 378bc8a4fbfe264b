#pragma once

#include "zelvar/base/DThread.h"
#include "zelvar/opends/OpenFactsReading.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <memory>
#include <optional>
#include <vector>

namespace zelvar {

/// Looks what opening further selected items would show, one after the other on a thread of its own that gives way to
/// all others, for two seconds at most.
///
/// `Run` belongs to the worker's thread, all else to the user-interface thread. It lives as long as its thread: a
/// window that closes lets go of it and does not wait.
class FactsFinder final : public DThread, public std::enable_shared_from_this<FactsFinder> {
public:
    static std::shared_ptr<FactsFinder> Create() { return std::shared_ptr<FactsFinder>(new FactsFinder); }
    ~FactsFinder() override = default;
    FactsFinder(FactsFinder const &) = delete;
    FactsFinder &operator=(FactsFinder const &) = delete;

    /// Once, before the first question. `target` gets `message` when there is something to take.
    void SetOwner(platform::MessageTarget target, platform::MessageId message);
    /// Looks at these in place of those before. What was found of those before and was not taken is dropped.
    void Ask(std::vector<OpenSubject> subjects, OpenWish wish);
    /// Nothing is to be looked at. Does not wait.
    void Cancel() { Ask({}, {}); }
    /// The window goes: what is under way is stopped and its answer is dropped. Does not wait.
    void Release();

    /// What was found since the last call, in the order of the subjects.
    [[nodiscard]] std::vector<OpenFacts> Take();
    /// Whether it still looks.
    [[nodiscard]] bool IsBusy() const;

    void Run() override;

private:
    FactsFinder() = default;
    struct Question {
        std::vector<OpenSubject> subjects;
        OpenWish wish;
    };
    bool TakeQuestion(Question &question);
    void Answer(Question const &question);
    /// False if nobody waits for it any more.
    bool Tell(OpenFacts facts);

    mutable std::mutex m_mutex; ///< guards all below but the signal
    bool m_running = false;
    std::shared_ptr<FactsFinder> m_self; ///< while the thread is at work
    std::optional<Question> m_pending;
    std::vector<OpenFacts> m_found;
    StopSignal m_stop{false};
    platform::MessageTarget m_target;
    platform::MessageId m_message = 0;
};

} // namespace zelvar
