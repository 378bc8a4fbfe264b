#include "zelvar/opends/places/FavoriteBook.h"

#include "zelvar/data/BDIMoniker.h"
#include "zelvar/model/DataSourceCollector.h"
#include "zelvar/opends/places/SettingsFields.h"
#include "zelvar/settings/Project.h"
#include "zelvar/store/DCnfg.h"
#include "zelvar/store/SettingsStore.h"

#include <algorithm>
#include <array>
#include <functional>

namespace zelvar {

namespace {

constexpr char kSection[] = "Favorites";
constexpr char kKey[] = "beside";
constexpr std::array kKinds{"place", "data", "basket", "search"};

std::optional<Favorite> FavoriteFrom(DString const &text) {
    std::vector<DString> const fields = SplitFields(text);
    constexpr std::size_t count = 4;
    if (fields.size() < count || fields[1].empty())
        return std::nullopt;
    auto const kind = std::find(kKinds.begin(), kKinds.end(), fields[0]);
    if (kind == kKinds.end())
        return std::nullopt; // of a later program
    return Favorite{static_cast<Favorite::Kind>(kind - kKinds.begin()), fields[1], fields[2], fields[3]};
}

void Write(DString const &key, std::vector<Favorite> const &favorites) {
    DVectorSafe<DString> texts;
    for (Favorite const &favorite : favorites)
        texts.push_back(JoinFields(
            {kKinds.at(static_cast<std::size_t>(favorite.kind)), favorite.target, favorite.name, favorite.group}));
    DUserCnfg(kSection).WriteStringVec(key, texts);
}

std::vector<Favorite>::iterator Find(std::vector<Favorite> &favorites, Favorite const &favorite) {
    return std::find_if(favorites.begin(), favorites.end(),
                        [&](Favorite const &candidate) { return candidate.IsOf(favorite); });
}

/// As they stand under the key, whatever has become of them.
std::vector<Favorite> ReadFrom(DString const &key, bool ofProject) {
    DVectorSafe<DString> texts;
    DUserCnfg(kSection).ReadStringVec(key, texts);
    std::vector<Favorite> favorites;
    for (DString const &text : texts)
        if (std::optional<Favorite> favorite = FavoriteFrom(text)) {
            favorite->ofProject = ofProject;
            if (Find(favorites, *favorite) == favorites.end())
                favorites.push_back(std::move(*favorite));
        }
    return favorites;
}

/// Those of all projects.
std::vector<Favorite> ReadCommon() {
    std::vector<DString> const places = Favorites::All();
    std::vector<Favorite> favorites = ReadFrom(kKey, false);
    std::erase_if(favorites, [&](Favorite const &favorite) {
        return favorite.kind == Favorite::Kind::Place &&
               std::none_of(places.begin(), places.end(),
                            [&](DString const &place) { return EqualNoCase(place, favorite.target); });
    });
    for (DString const &place : places)
        if (Favorite const favorite{.target = place}; Find(favorites, favorite) == favorites.end())
            favorites.push_back(favorite);
    return favorites;
}

/// In one transaction: another process may be changing them, too.
void ChangeThose(bool ofProject, std::function<void(std::vector<Favorite> &)> const &change) {
    DString const key = ofProject ? KeyOfProject(kKey) : DString(kKey);
    if (key.empty())
        return;
    SettingsStore::Instance().TransactSoon([=] {
        std::vector<Favorite> favorites = ofProject ? ReadFrom(key, true) : ReadCommon();
        change(favorites);
        Write(key, favorites);
        return true;
    });
}

} // namespace

DString Favorite::ShownName() const {
    if (!name.empty())
        return name;
    if (target.find("://") != DString::npos)
        return BDIMoniker(target, nullptr).GetDisplayName();
    std::string_view text = target; // no place is asked
    while (text.size() > 1 && text.ends_with('/'))
        text.remove_suffix(1);
    std::string_view const last = text.substr(text.rfind('/') + 1);
    return DString(last.empty() ? text : last);
}

bool Favorite::IsSameThing(Favorite const &other) const {
    return kind == other.kind && (kind == Kind::Place ? EqualNoCase(target, other.target) : target == other.target);
}

bool Favorite::IsOf(Favorite const &other) const { return ofProject == other.ofProject && IsSameThing(other); }

std::vector<Favorite> FavoriteBook::Read() {
    DString const ofProject = KeyOfProject(kKey);
    std::vector<Favorite> favorites = ofProject.empty() ? std::vector<Favorite>() : ReadFrom(ofProject, true);
    auto const count = static_cast<std::ptrdiff_t>(favorites.size());
    for (Favorite &favorite : ReadCommon())
        if (std::none_of(favorites.begin(), favorites.begin() + count,
                         [&](Favorite const &known) { return known.IsSameThing(favorite); }))
            favorites.push_back(std::move(favorite));
    return favorites;
}

void FavoriteBook::Add(Favorite favorite) {
    favorite.target = StorablePlace(favorite.target);
    favorite.ofProject = !GetProject().empty();
    if (!favorite.ofProject && favorite.kind == Favorite::Kind::Place && !Favorites::Contains(favorite.target))
        Favorites::Add(favorite.target);
    ChangeThose(favorite.ofProject, [favorite](std::vector<Favorite> &favorites) {
        auto const at = Find(favorites, favorite);
        if (at == favorites.end())
            favorites.push_back(favorite);
        else if (at->name.empty() && at->group.empty())
            *at = favorite; // the place has just been added
    });
}

void FavoriteBook::Remove(Favorite const &favorite) {
    if (!favorite.ofProject && favorite.kind == Favorite::Kind::Place)
        Favorites::Remove(favorite.target);
    ChangeThose(favorite.ofProject, [favorite](std::vector<Favorite> &favorites) {
        std::erase_if(favorites, [&](Favorite const &candidate) { return candidate.IsOf(favorite); });
    });
}

void FavoriteBook::Change(Favorite const &favorite, DString const &name, DString const &group) {
    ChangeThose(favorite.ofProject, [=](std::vector<Favorite> &favorites) {
        if (auto const at = Find(favorites, favorite); at != favorites.end())
            at->name = name, at->group = group;
    });
}

void FavoriteBook::MoveBefore(Favorite const &favorite, std::optional<Favorite> const &next) {
    if (next && next->ofProject != favorite.ofProject)
        return; // it would be another's
    ChangeThose(favorite.ofProject, [=](std::vector<Favorite> &favorites) {
        auto const at = Find(favorites, favorite);
        if (at == favorites.end() || (next && next->IsOf(favorite)))
            return;
        Favorite moved = *at;
        favorites.erase(at);
        auto const to = next ? Find(favorites, *next) : favorites.end();
        if (to != favorites.end())
            moved.group = to->group;
        favorites.insert(to, std::move(moved));
    });
}

} // namespace zelvar
