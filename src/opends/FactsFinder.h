#pragma once

#include "zelvar/opends/OpenFactsReading.h"
#include "zelvar/opends/WindowWorker.h"
#include "zelvar/platform/ui/MessageTarget.h"

#include <memory>
#include <optional>
#include <vector>

namespace zelvar {

/// Looks what opening further selected items would show, one after the other on a thread of its own that gives way to
/// all others, for two seconds at most.
class FactsFinder final : public WindowWorker {
public:
    static std::shared_ptr<FactsFinder> Create() { return std::shared_ptr<FactsFinder>(new FactsFinder); }

    /// Once, before the first question. `target` gets `message` when there is something to take.
    void SetOwner(platform::MessageTarget target, platform::MessageId message);
    /// Looks at these in place of those before. What was found of those before and was not taken is dropped.
    void Ask(std::vector<OpenSubject> subjects, OpenWish wish);
    void Cancel() override { Ask({}, {}); }

    /// What was found since the last call, in the order of the subjects.
    [[nodiscard]] std::vector<OpenFacts> Take();
    /// Whether it still looks.
    [[nodiscard]] bool IsBusy() const;

private:
    FactsFinder() = default;
    struct Question {
        std::vector<OpenSubject> subjects;
        OpenWish wish;
    };
    bool WorkOnNext() override;
    void Answer(Question const &question);
    /// False if nobody waits for it any more.
    bool Tell(OpenFacts facts);

    std::optional<Question> m_pending;
    std::vector<OpenFacts> m_found;
    StopSignal m_stop{false};
    platform::MessageTarget m_target;
    platform::MessageId m_message = 0;
};

} // namespace zelvar
