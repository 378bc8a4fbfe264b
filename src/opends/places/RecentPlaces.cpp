#include "zelvar/opends/places/RecentPlaces.h"

#include "zelvar/opends/places/SettingsFields.h"
#include "zelvar/store/DCnfg.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char kSection[] = "RecentPlaces";

} // namespace

DString ToSettingsText(RecentPlace const &place) {
    std::vector<DString> fields{StorablePlace(place.path), place.view.top};
    std::size_t const count = std::min(place.view.selected.size(), RecentPlaces::kMostSelected);
    fields.insert(fields.end(), place.view.selected.begin(),
                  place.view.selected.begin() + static_cast<std::ptrdiff_t>(count));
    return JoinFields(fields);
}

std::optional<RecentPlace> RecentPlaceFrom(DString const &text) {
    std::vector<DString> const fields = SplitFields(text);
    if (fields.size() < 2 || fields[0].empty())
        return std::nullopt;
    return RecentPlace{fields[0], {.selected = {fields.begin() + 2, fields.end()}, .top = fields[1]}};
}

std::vector<RecentPlace> RecentPlaces::Read() const {
    DVectorSafe<DString> texts;
    DUserCnfg(kSection).ReadStringVec(m_kind, texts);
    std::vector<RecentPlace> places;
    for (DString const &text : texts)
        if (std::optional<RecentPlace> place = RecentPlaceFrom(text); place && places.size() < kMost)
            places.push_back(std::move(*place));
    return places;
}

void RecentPlaces::Add(std::vector<RecentPlace> const &latest) const {
    if (latest.empty())
        return;
    std::vector<RecentPlace> all = latest;
    for (RecentPlace &former : Read())
        all.push_back(std::move(former));
    DVectorSafe<DString> texts;
    std::vector<DString> seen;
    for (RecentPlace const &place : all) {
        if (seen.size() == kMost || std::find(seen.begin(), seen.end(), place.path) != seen.end())
            continue;
        seen.push_back(place.path);
        texts.push_back(ToSettingsText(place));
    }
    DUserCnfg(kSection).WriteStringVec(m_kind, texts);
}

} // namespace zelvar
