#include "zelvar/opends/places/RecentPlaces.h"

#include "zelvar/opends/places/SettingsFields.h"
#include "zelvar/settings/Project.h"
#include "zelvar/store/DCnfg.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char kSection[] = "RecentPlaces";

/// Each place once, as many as are kept.
std::vector<RecentPlace> Merged(std::vector<RecentPlace> const &first, std::vector<RecentPlace> const &others) {
    std::vector<RecentPlace> merged;
    for (std::vector<RecentPlace> const *const some : {&first, &others})
        for (RecentPlace const &place : *some)
            if (merged.size() < RecentPlaces::kMost &&
                std::none_of(merged.begin(), merged.end(),
                             [&](RecentPlace const &known) { return known.path == place.path; }))
                merged.push_back(place);
    return merged;
}

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

std::vector<RecentPlace> RecentPlaces::ReadFrom(DString const &key) {
    DVectorSafe<DString> texts;
    DUserCnfg(kSection).ReadStringVec(key, texts);
    std::vector<RecentPlace> places;
    for (DString const &text : texts)
        if (std::optional<RecentPlace> place = RecentPlaceFrom(text); place && places.size() < kMost)
            places.push_back(std::move(*place));
    return places;
}

std::vector<RecentPlace> RecentPlaces::Read() const {
    DString const ofProject = KeyOfProject(m_kind);
    return ofProject.empty() ? ReadFrom(m_kind) : Merged(ReadFrom(ofProject), ReadFrom(m_kind));
}

void RecentPlaces::AddTo(DString const &key, std::vector<RecentPlace> const &latest) {
    DVectorSafe<DString> texts;
    for (RecentPlace const &place : Merged(latest, ReadFrom(key)))
        texts.push_back(ToSettingsText(place));
    DUserCnfg(kSection).WriteStringVec(key, texts);
}

void RecentPlaces::Add(std::vector<RecentPlace> const &latest) const {
    if (latest.empty())
        return;
    AddTo(m_kind, latest);
    if (DString const ofProject = KeyOfProject(m_kind); !ofProject.empty())
        AddTo(ofProject, latest);
}

} // namespace zelvar
