#include "zelvar/opends/search/SearchRun.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zelvar {

std::shared_ptr<SearchRun> SearchRun::Start(Order order) {
    std::shared_ptr<SearchRun> run(new SearchRun(std::move(order)));
    run->m_self = run;
    if (run->DThread::Start())
        return run;
    run->m_self.reset();
    return nullptr;
}

void SearchRun::Release() {
    m_stop = true;
    Abandon(); // the thread holds this object until it has ended
}

void SearchRun::Run() {
    // The last owner may be this thread.
    std::shared_ptr<SearchRun> const self = std::move(m_self);
    FactsStore store; // opened at the first question
    auto const keep = [this](SearchProgress const &progress) {
        std::lock_guard const lock(m_mutex);
        std::int64_t const hits = m_progress.hits;
        m_progress = progress;
        m_progress.hits = hits;
    };
    keep(Search(m_order.query, &store)
             .Run(
                 m_order.places, m_stop, [this](SearchHit &&hit) { Take(std::move(hit)); }, keep));
    m_isAtWork = false;
}

void SearchRun::Take(SearchHit &&hit) {
    if (!hit.item->IsFolder() && !hit.item->IsFile(m_order.nodeMask))
        return; // of no use to this window
    std::lock_guard const lock(m_mutex);
    m_hits.push_back(std::move(hit.item));
    if (++m_progress.hits >= kMostHits)
        m_stop = true;
}

SearchRun::Items SearchRun::TakeHits(std::size_t most) {
    std::lock_guard const lock(m_mutex);
    auto const first = m_hits.begin() + static_cast<std::ptrdiff_t>(m_taken);
    std::size_t const count = std::min(most, m_hits.size() - m_taken);
    auto const last = first + static_cast<std::ptrdiff_t>(count);
    Items taken(std::make_move_iterator(first), std::make_move_iterator(last));
    m_taken += count;
    if (m_taken == m_hits.size()) {
        m_hits.clear();
        m_taken = 0;
    }
    return taken;
}

bool SearchRun::HasHits() const {
    std::lock_guard const lock(m_mutex);
    return m_taken < m_hits.size();
}

SearchProgress SearchRun::Progress() const {
    std::lock_guard const lock(m_mutex);
    return m_progress;
}

} // namespace zelvar
