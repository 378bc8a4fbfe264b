#include "zelvar/search/FactsReader.h"

#include "zelvar/data/ImageReader.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/search/StopQuestion.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr std::size_t kTogether = 32; // candidates that a thread takes at a time
constexpr std::size_t kMostWaiting = 1024;
constexpr unsigned kMostThreads = 4;

} // namespace

FactsReader::FactsReader(SearchQuery const &query, FactsStore *store, StopSignal const &stop, Search::OnHit onHit)
    : m_query(query), m_store(store), m_stop(stop), m_onHit(std::move(onHit)) {}

FactsReader::~FactsReader() {
    {
        std::lock_guard const lock(m_mutex);
        m_isEnding = true;
        m_changed.notify_all();
    }
    for (std::thread &thread : m_threads)
        thread.join();
}

void FactsReader::Add(Candidate &&candidate) {
    std::unique_lock lock(m_mutex);
    while (m_waiting.size() >= kMostWaiting && !m_stop)
        m_changed.wait_for(lock, std::chrono::milliseconds(20));
    if (m_stop)
        return;
    m_waiting.push_back(std::move(candidate));
    // The first of them can begin at once; others come with the work.
    unsigned const most = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
    if (m_threads.size() < most && m_waiting.size() > m_threads.size() * kTogether)
        m_threads.emplace_back([this] { Run(); });
    m_changed.notify_one();
}

void FactsReader::Finish() {
    std::unique_lock lock(m_mutex);
    while (!m_stop && (!m_waiting.empty() || m_busy > 0))
        m_changed.wait_for(lock, std::chrono::milliseconds(20));
}

FactsReader::Candidates FactsReader::Take() {
    Candidates taken;
    while (taken.size() < kTogether && !m_waiting.empty()) {
        taken.push_back(std::move(m_waiting.front()));
        m_waiting.pop_front();
    }
    return taken;
}

void FactsReader::Run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        if (m_isEnding)
            return;
        Candidates taken = Take();
        ++m_busy;
        lock.unlock();
        Ask(taken);
        lock.lock();
        --m_busy;
        m_changed.notify_all();
    }
}

void FactsReader::Ask(Candidates &candidates) {
    std::vector<FactsStore::Known> fresh;
    std::vector<std::optional<ItemFacts>> known(candidates.size());
    bool const needsFacts = m_query.NeedsFacts();
    if (needsFacts && m_store != nullptr) {
        std::vector<FactsStore::Key> keys;
        for (Candidate const &each : candidates)
            keys.push_back({each.path, each.state.size, each.state.modified});
        known = m_store->Find(keys);
    }
    for (std::size_t i = 0; i < candidates.size() && !m_stop; ++i) {
        Candidate &each = candidates[i];
        ++m_asked;
        if (m_query.inside || m_query.kind == SearchQuery::Kind::Container) {
            LookInside(each, fresh);
            if (m_query.kind == SearchQuery::Kind::Container)
                continue;
        }
        if (!each.matchesName)
            continue;
        if (!needsFacts) {
            Tell(std::move(each.item), {});
            continue;
        }
        ItemFacts const facts =
            known[i] ? *known[i] : FactsOf(each.path, each.item->GetRDIDriverId(), each.state, fresh);
        if (m_query.MatchesFacts(facts))
            Tell(std::move(each.item), facts);
    }
    if (m_store != nullptr)
        m_store->Keep(fresh);
}

void FactsReader::LookInside(Candidate const &candidate, std::vector<FactsStore::Known> &fresh) {
    auto *const file = dynamic_cast<NtwDataSourceItem *>(candidate.item.get());
    std::optional<bool> const is = file == nullptr ? std::nullopt : ClassifyAtLeisure(candidate.path, &m_stop);
    if (!is || m_stop)
        return;
    file->SetClassified(*is);
    if (!*is)
        return;
    if (m_query.kind == SearchQuery::Kind::Container && candidate.matchesName)
        Tell(candidate.item->Clone(), {}); // this one is listed below
    if (!m_query.inside)
        return;
    StopQuestion cancel(m_stop);
    ListingWalk walk({.recursive = true, .nodeMask = kAllData, .cancel = &cancel});
    walk.Through(candidate.item, [&](RefItemPtr<DataSourceItem> node) {
        using Kind = SearchQuery::Kind;
        bool const isWanted = m_query.kind == Kind::Any || m_query.kind == Kind::Image ||
                              (m_query.kind == Kind::Container && node->IsFolder());
        if (!isWanted || !m_query.MatchesName(node->GetName()) || !(node->IsFile(kAllData) || node->IsFolder()))
            return !m_stop;
        if (!m_query.NeedsFacts()) {
            Tell(std::move(node), {});
        } else if (node->IsFile(kAllData)) {
            ItemFacts const facts = FactsOf(node->GetPath(), node->GetRDIDriverId(), candidate.state, fresh);
            if (m_query.MatchesFacts(facts))
                Tell(std::move(node), facts);
        }
        return !m_stop;
    });
}

ItemFacts FactsReader::FactsOf(DString const &path, DString const &driverId, FileState const &state,
                               std::vector<FactsStore::Known> &fresh) {
    FactsStore::Key key{path, state.size, state.modified};
    ImageInfo image;
    DError error;
    ItemFacts facts;
    if (ReadImageInfo({path, nullptr}, driverId, &m_stop, image, &error))
        facts = {.kind = ItemFacts::Kind::Image,
                 .width = image.width,
                 .height = image.height,
                 .channels = image.channels,
                 .slices = image.slices,
                 .frames = image.timeFrames,
                 .dataType = image.dataType,
                 .format = image.driver};
    else if (m_stop || error.Why() == DError::Cause::Late || error.Why() == DError::Cause::NoAnswer)
        return facts; // another time there may be an answer
    // A file without a time may change unseen.
    if (state.modified != 0)
        fresh.emplace_back(std::move(key), facts);
    return facts;
}

void FactsReader::Tell(RefItemPtr<DataSourceItem> item, std::optional<ItemFacts> facts) {
    std::lock_guard const lock(m_hitMutex);
    if (!m_stop)
        m_onHit({std::move(item), std::move(facts)});
}

} // namespace zelvar
