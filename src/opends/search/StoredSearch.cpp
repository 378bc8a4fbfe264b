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
    DString text = "place=" + PercentEncoded(place, true);
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
    for (DString const &piece : Split(text, '&'))
        if (std::size_t const equals = piece.find('='); equals != DString::npos)
            values[piece.substr(0, equals)] = PercentDecoded(std::string_view(piece).substr(equals + 1));
    auto const number = [&values](char const *key, int most) {
        std::int64_t const value = WholeNumberFrom(values[key]).value_or(0);
        return value > most ? 0 : static_cast<int>(value);
    };
    if (values["place"].empty())
        return std::nullopt;
    constexpr int kAllTypes = 0xFFFF;
    StoredSearch search{
        .place = values["place"],
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
    std::string_view folder = place;
    while (folder.size() > 1 && folder.ends_with('/'))
        folder.remove_suffix(1);
    folder = folder.substr(folder.size() == 1 ? 0 : folder.rfind('/') + 1);
    DString const what = draft.name.empty() ? DString("*") : draft.name;
    DString const more = draft.HasFacts() ? " ..." : "";
    return Format(Translated("%s in %s"), (what + more).c_str(), DString(folder).c_str());
}

} // namespace zelvar
