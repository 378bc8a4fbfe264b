#include "zelvar/opends/search/StoredSearch.h"

#include "zelvar/base/Percent.h"
#include "zelvar/base/Translation.h"
#include "zelvar/search/SearchWords.h"

#include <map>
#include <utility>

namespace zelvar {

namespace {

using Bounds = SearchDraft::Bounds;
constexpr std::pair<char const *, Bounds SearchDraft::*> kBounds[] = {
    {"width", &SearchDraft::width},       {"height", &SearchDraft::height}, {"channels", &SearchDraft::channels},
    {"slices", &SearchDraft::slices},     {"frames", &SearchDraft::frames}, {"bytes", &SearchDraft::bytes},
    {"modified", &SearchDraft::modified},
};

} // namespace

DString StoredSearch::ToText() const {
    DString text;
    for (DString const &place : places)
        text += (text.empty() ? "place=" : "&place=") + PercentEncoded(place, true);
    auto const add = [&text](DString const &key, DString const &value) {
        if (!value.empty())
            text += "&" + key + "=" + PercentEncoded(value, true);
    };
    add("name", draft.name);
    add("kind", draft.kind == SearchQuery::Kind::Any ? "" : Format("%d", static_cast<int>(draft.kind)));
    add("format", draft.format);
    add("types", draft.dataTypes == 0 ? "" : Format("%d", draft.dataTypes));
    for (auto const &[key, field] : kBounds) {
        add(DString("least-") + key, (draft.*field).least);
        add(DString("most-") + key, (draft.*field).most);
    }
    add("inside", draft.inside ? "1" : "");
    add("remote", draft.remote ? "1" : "");
    return text;
}

std::optional<StoredSearch> StoredSearch::FromText(DString const &text) {
    std::map<DString, DString> values;
    std::vector<DString> places;
    for (DString const &piece : Split(text, '&'))
        if (std::size_t const equals = piece.find('='); equals != DString::npos) {
            DString value = PercentDecoded(std::string_view(piece).substr(equals + 1));
            if (piece.starts_with("place="))
                places.push_back(std::move(value));
            else
                values[piece.substr(0, equals)] = std::move(value);
        }
    std::erase(places, DString());
    auto const number = [&values](char const *key, int most) {
        std::int64_t const value = WholeNumberFrom(values[key]).value_or(0);
        return value > most ? 0 : static_cast<int>(value);
    };
    if (places.empty())
        return std::nullopt;
    constexpr int kAllTypes = 0xFFFF;
    StoredSearch search{
        .places = std::move(places),
        .draft = {.name = values["name"],
                  .kind = static_cast<SearchQuery::Kind>(number("kind", static_cast<int>(SearchQuery::Kind::Image))),
                  .format = values["format"],
                  .dataTypes = number("types", kAllTypes),
                  .inside = !values["inside"].empty(),
                  .remote = !values["remote"].empty()}};
    for (auto const &[key, field] : kBounds)
        search.draft.*field = {values[DString("least-") + key], values[DString("most-") + key]};
    return search;
}

DString StoredSearch::InWords() const {
    DString folders;
    for (std::string_view folder : places) {
        while (folder.size() > 1 && folder.ends_with('/'))
            folder.remove_suffix(1);
        folders.append(folders.empty() ? "" : ", ")
            .append(folder.substr(folder.size() == 1 ? 0 : folder.rfind('/') + 1));
    }
    DString const what = draft.name.empty() ? DString("*") : draft.name;
    DString const more = draft.HasFacts() ? " ..." : "";
    return Format(Translated("%s in %s"), (what + more).c_str(), folders.c_str());
}

} // namespace zelvar
