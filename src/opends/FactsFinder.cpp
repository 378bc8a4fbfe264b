#include "zelvar/opends/FactsFinder.h"

#include "zelvar/data/RequestScope.h"

#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr std::chrono::seconds kTime{2};
constexpr int kNiceness = 10;

} // namespace

void FactsFinder::SetOwner(platform::MessageTarget target, platform::MessageId message) {
    m_target = std::move(target);
    m_message = message;
}

void FactsFinder::Ask(std::vector<OpenSubject> subjects, OpenWish wish) {
    Hand([&] {
        m_found.clear();
        m_stop = true;
        m_pending.reset();
        if (!subjects.empty())
            m_pending = {std::move(subjects), wish};
        return m_pending.has_value();
    });
}

std::vector<OpenFacts> FactsFinder::Take() {
    std::lock_guard const lock(m_mutex);
    return std::exchange(m_found, {});
}

bool FactsFinder::IsBusy() const {
    std::lock_guard const lock(m_mutex);
    return IsRunning() && (m_pending || !m_stop);
}

bool FactsFinder::Tell(OpenFacts facts) {
    bool isFirst = false;
    {
        std::lock_guard const lock(m_mutex);
        if (m_stop)
            return false;
        isFirst = m_found.empty();
        m_found.push_back(std::move(facts));
    }
    if (isFirst) // one message stands for all that nobody has taken
        m_target.Post(m_message);
    return true;
}

void FactsFinder::Answer(Question const &question) {
    auto const end = RequestScope::Clock::now() + kTime;
    auto const isOver = [&] { return RequestScope::Clock::now() >= end; };
    // One that is stopped is not late: nothing is held against it.
    RequestScope const scope(RequestKind::Properties, isOver);
    for (OpenSubject const &subject : question.subjects) {
        OpenFacts facts = ReadOpenFacts(subject, question.wish, &m_stop);
        if (isOver() || !Tell(std::move(facts)))
            return;
    }
}

bool FactsFinder::WorkOnNext() {
    std::optional<Question> const question = TakeNext(m_pending, m_stop);
    if (!question)
        return false;
    std::ignore = setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNiceness); // it only helps
    Answer(*question);
    {
        std::lock_guard const lock(m_mutex);
        m_stop = true;
    }
    m_target.Post(m_message); // it looks no more
    return true;
}

} // namespace zelvar
