#include "zelvar/opends/places/RecentPlaces.h"

#include "zelvar/base/Percent.h"
#include "zelvar/base/Redaction.h"
#include "zelvar/store/DCnfg.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char kSection[] = "RecentPlaces";
constexpr char kBetween = ' '; // fields have none

} // namespace

DString ToSettingsText(RecentPlace const &place) {
    bool const isAddress = place.path.find("://") != DString::npos; // a name on a disk may look like a secret
    DString text = PercentEncoded(isAddress ? Redacted(place.path) : place.path, true) + kBetween +
                   PercentEncoded(place.view.top, true);
    std::size_t const count = std::min(place.view.selected.size(), RecentPlaces::kMostSelected);
    for (std::size_t i = 0; i < count; ++i)
        text += kBetween + PercentEncoded(place.view.selected[i], true);
    return text;
}

std::optional<RecentPlace> RecentPlaceFrom(DString const &text) {
    std::vector<DString> fields;
    for (std::size_t from = 0; from <= text.size();) {
        std::size_t const end = std::min(text.find(kBetween, from), text.size());
        fields.push_back(PercentDecoded(std::string_view(text).substr(from, end - from)));
        from = end + 1;
    }
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
