#include "zelvar/data/gdal/services/Capabilities.h"

#include <algorithm>

namespace zelvar::services {

Offer const *Capabilities::Find(std::string_view name) const {
    auto const at = std::ranges::find(offers, name, &Offer::name);
    return at == offers.end() || name.empty() ? nullptr : &*at;
}

namespace {

/// The offer itself and those around it, from the inside out.
template <class Visit>
void ForEachAround(Capabilities const &capabilities, Offer const &offer, Visit &&visit) {
    for (Offer const *at = &offer; at != nullptr;
         at = at->parent < 0 ? nullptr : &capabilities.offers[static_cast<std::size_t>(at->parent)])
        if (!visit(*at))
            return;
}

} // namespace

std::vector<Style> Capabilities::StylesOf(Offer const &offer) const {
    constexpr std::size_t most = 500;
    std::vector<Style> found;
    ForEachAround(*this, offer, [&](Offer const &at) {
        std::size_t const room = std::min(most - found.size(), at.styles.size());
        found.insert(found.end(), at.styles.begin(), at.styles.begin() + static_cast<std::ptrdiff_t>(room));
        return found.size() < most;
    });
    return found;
}

std::vector<BoundingBox> Capabilities::BoxesOf(Offer const &offer) const {
    std::vector<BoundingBox> found;
    ForEachAround(*this, offer, [&](Offer const &at) {
        found = at.boxes;
        return found.empty();
    });
    return found;
}

std::optional<Extent> Capabilities::GeographicOf(Offer const &offer) const {
    std::optional<Extent> found;
    ForEachAround(*this, offer, [&](Offer const &at) {
        found = at.geographic;
        return !found;
    });
    return found;
}

bool Capabilities::MayAskIn(Offer const &offer, bool Offer::*system) const {
    bool may = false;
    ForEachAround(*this, offer, [&](Offer const &at) {
        may = at.*system;
        return !may;
    });
    return may;
}

} // namespace zelvar::services
