#include "zelvar/opends/places/PlaceHistory.h"

#include <algorithm>
#include <utility>

namespace zelvar {

void PlaceHistory::Enter(RefItemPtr<DataSourceItem> place, bool replaces) {
    DString path = place->GetPath();
    std::erase(m_order, path);
    m_order.push_back(path);
    if (m_order.size() > kMost)
        m_order.erase(m_order.begin());
    if (m_visits.empty()) {
        m_visits.push_back({std::move(place), std::move(path)});
        return;
    }
    if (m_visits[m_at].path == path) {
        m_visits[m_at].place = std::move(place);
        return;
    }
    m_visits.resize(m_at + (replaces ? 0 : 1));
    m_visits.push_back({std::move(place), std::move(path)});
    if (m_visits.size() > kMost)
        m_visits.erase(m_visits.begin());
    m_at = m_visits.size() - 1;
}

void PlaceHistory::Keep(PlaceView view) {
    if (!m_visits.empty())
        m_visits[m_at].view = std::move(view);
}

bool PlaceHistory::CanGo(int step) const {
    auto const to = static_cast<std::ptrdiff_t>(m_at) + step;
    return to >= 0 && to < static_cast<std::ptrdiff_t>(m_visits.size());
}

PlaceHistory::Visit const &PlaceHistory::Go(int step) {
    m_at = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(m_at) + step);
    return m_visits[m_at];
}

PlaceHistory::Visit const *PlaceHistory::Present() const { return m_visits.empty() ? nullptr : &m_visits[m_at]; }

std::vector<PlaceHistory::Visit const *> PlaceHistory::Latest() const {
    std::vector<Visit const *> latest;
    for (auto path = m_order.rbegin(); path != m_order.rend(); ++path) {
        // Of several visits the last tells how it was left.
        auto const visit = std::find_if(m_visits.rbegin(), m_visits.rend(),
                                        [&](Visit const &candidate) { return candidate.path == *path; });
        if (visit != m_visits.rend())
            latest.push_back(&*visit);
    }
    return latest;
}

} // namespace zelvar
