#include "zelvar/opends/PlaceOpener.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zelvar {

namespace {

/// A look for data ends with the question, and after a few seconds: they are as well looked for by hand then.
class LookEnd final : public DataSourceItem::ICancel {
public:
    explicit LookEnd(StopSignal const &stop) : m_stop(stop) {}
    [[nodiscard]] bool IsCanceled() override { return m_stop || std::chrono::steady_clock::now() >= m_end; }

private:
    StopSignal const &m_stop;
    std::chrono::steady_clock::time_point m_end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
};

} // namespace

bool PlaceOpener::IsFor(DString const &place) {
    return place.starts_with("source:") || (BDIMoniker(place, nullptr).IsUrl() && !platform::IsSmbAddress(place) &&
                                            !StartsWithNoCase(place, "file://"));
}

DString PlaceOpener::PlaceOf(DString const &data) {
    if (IsMapServiceAddress(data)) {
        std::shared_ptr<ConnectionBook const> const book = ConnectionBook::Now();
        ConnectionBook::Entry const *const entry = book->FindByAddress(data);
        return entry == nullptr ? data : ConnectionIdOf(entry->connection);
    }
    std::size_t const host = data.find("://");
    std::size_t const end = data.rfind('/', std::min(data.find('?'), data.size()));
    return host == DString::npos || end < host + 3 ? data : data.substr(0, end);
}

void PlaceOpener::SetOwner(platform::MessageTarget target, platform::MessageId message) {
    m_target = std::move(target);
    m_message = message;
}

void PlaceOpener::Ask(Question question) {
    Hand([&] {
        m_pending = std::move(question);
        m_answer.reset();
        m_stop = true;
        return true;
    });
}

void PlaceOpener::Open(TemplDataSourceItem &connection) { Ask({.connection = connection.Clone()}); }

void PlaceOpener::Find(DString place, std::vector<DString> data) {
    Ask({.place = std::move(place), .data = std::move(data)});
}

void PlaceOpener::Cancel() {
    std::lock_guard const lock(m_mutex);
    m_pending.reset();
    m_answer.reset();
    m_stop = true;
}

bool PlaceOpener::IsBusy() const {
    std::lock_guard const lock(m_mutex);
    return m_pending || (IsRunning() && !m_stop);
}

std::optional<PlaceOpener::Answer> PlaceOpener::TakeAnswer() {
    std::lock_guard const lock(m_mutex);
    return std::exchange(m_answer, std::nullopt);
}

PlaceOpener::Answer PlaceOpener::AnswerTo(Question const &question) {
    Answer answer{.place = question.place, .item = question.connection};
    if (answer.item != nullptr) {
        answer.item->Prepare();
    } else {
        answer.item = ItemFromPlace(question.place, &answer.error);
        if (answer.item != nullptr)
            answer.item->BuildParents();
    }
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(answer.item.get());
    if (tree != nullptr && !tree->IsOpen())
        answer.error = tree->GetFailure();
    if (tree != nullptr && tree->IsOpen() && !question.data.empty()) {
        LookEnd end(m_stop);
        RefItemPtr<DataSourceItem> const item = FindBelow(answer.item, question.data, end);
        if (RefItemPtr<DataSourceItem> const group = item == nullptr ? nullptr : item->GetParent(); group != nullptr)
            answer.item = group;
    }
    return answer;
}

bool PlaceOpener::WorkOnNext() {
    std::optional<Question> const question = TakeNext(m_pending, m_stop);
    if (!question)
        return false;
    RequestScope const scope(RequestKind::List, [this] { return m_stop.load(); });
    Answer answer = AnswerTo(*question);
    {
        std::lock_guard const lock(m_mutex);
        if (m_stop)
            return true;
        m_answer = std::move(answer);
        m_stop = true; // it works no more
    }
    m_target.Post(m_message);
    return true;
}

} // namespace zelvar
