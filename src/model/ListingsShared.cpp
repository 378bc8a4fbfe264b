#include "zelvar/model/ListingsShared.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace zelvar {

namespace {

thread_local ListingsShared *t_current = nullptr;
std::atomic<std::uint64_t> g_last{0};

} // namespace

ListingsShared::ListingsShared() : m_isOuter(t_current == nullptr), m_number(++g_last) {
    if (m_isOuter)
        t_current = this;
}

ListingsShared::~ListingsShared() {
    if (m_isOuter)
        t_current = nullptr;
}

ListingsShared *ListingsShared::Current() { return t_current; }

ListingsShared::Items const *ListingsShared::Find(Key const &key) const {
    auto const at = std::find_if(m_listings.begin(), m_listings.end(), [&](Listing const &listing) {
        return listing.key.folder.get() == key.folder.get() && listing.key.filter == key.filter &&
               listing.key.driverId == key.driverId && listing.key.folding == key.folding;
    });
    return at == m_listings.end() ? nullptr : &at->items;
}

void ListingsShared::Keep(Key key, Items items) { m_listings.push_back({std::move(key), std::move(items)}); }

} // namespace zelvar
