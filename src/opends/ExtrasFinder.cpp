#include "zelvar/opends/ExtrasFinder.h"

#include "zelvar/data/RequestScope.h"
#include "zelvar/model/SeriesItem.h"

#include <utility>

namespace zelvar {

void ExtrasFinder::SetOwner(platform::MessageTarget target, platform::MessageId message) {
    m_target = std::move(target);
    m_message = message;
}

void ExtrasFinder::Ask(DataSourceExtras const &extras, ItemList items, Drivers drivers, DString driverId) {
    Hand([&] {
        m_pending = {extras, std::move(items), drivers, std::move(driverId)};
        m_answer.reset();
        m_stop = true;
        return true;
    });
}

void ExtrasFinder::Cancel() {
    std::lock_guard const lock(m_mutex);
    m_pending.reset();
    m_stop = true;
}

bool ExtrasFinder::IsBusy(std::chrono::milliseconds wait) const {
    std::unique_lock lock(m_mutex);
    return !m_idle.wait_for(lock, wait, [this] { return !IsRunning(); });
}

std::optional<ExtrasFinder::Answer> ExtrasFinder::TakeAnswer() {
    std::lock_guard const lock(m_mutex);
    return std::exchange(m_answer, std::nullopt);
}

void ExtrasFinder::TellDriverOf(Question const &question, Answer &answer) const {
    DataSourceItem const &item = *question.items.front();
    RequestScope const scope(
        RequestKind::Probe, [this] { return m_stop.load(); }, kNamedProbe);
    auto const *const series = dynamic_cast<SeriesItem const *>(&item);
    DString const path = series != nullptr && series->MemberCount() > 0 ? series->MemberPath(0) : item.GetPath();
    answer.driverId = question.driverId.empty() ? item.GetRDIDriverId() : question.driverId;
    if (answer.driverId.empty() && !path.empty())
        answer.driverId = TellDriver({path, nullptr});
    answer.lists = DriverOptions(answer.driverId);
}

bool ExtrasFinder::WorkOnNext() {
    std::optional<Question> const question = TakeNext(m_pending, m_stop);
    if (!question)
        return false;
    Answer answer{question->extras.FindFirstOptions(question->items, m_stop)};
    if (answer.options == nullptr && question->drivers == Drivers::Ask && !question->items.empty())
        TellDriverOf(*question, answer);
    {
        std::lock_guard const lock(m_mutex);
        if (m_stop || m_pending)
            return true;
        m_answer = std::move(answer);
    }
    m_target.Post(m_message);
    return true;
}

} // namespace zelvar
