#include "zelvar/search/SearchQuery.h"

#include "zelvar/base/PathStyle.h"

namespace zelvar {

DString MasksOf(std::string_view name) {
    DString masks;
    for (std::size_t begin = 0; begin <= name.size();) {
        std::size_t const end = std::min(name.find(';', begin), name.size());
        std::string_view part = name.substr(begin, end - begin);
        begin = end + 1;
        while (part.starts_with(' '))
            part.remove_prefix(1);
        if (part.empty())
            continue;
        bool const isMask = part.find_first_of("*?") != std::string_view::npos;
        masks.append(masks.empty() ? "" : ";").append(isMask ? "" : "*").append(part).append(isMask ? "" : "*");
    }
    return masks;
}

bool SearchQuery::NeedsFacts() const {
    return kind == Kind::Image || !format.empty() || width.IsSet() || height.IsSet() || channels.IsSet() ||
           slices.IsSet() || frames.IsSet() || dataTypes != 0;
}

bool SearchQuery::MatchesName(std::string_view itsName) const {
    return name.empty() || PathMatchSpec(itsName, MasksOf(name));
}

bool SearchQuery::MatchesFile(std::string_view itsName) const { return files.empty() || PathMatchSpec(itsName, files); }

bool SearchQuery::MatchesState(FileState const &state) const {
    return (!bytes.IsSet() || (state.size >= 0 && bytes.Holds(state.size))) &&
           (!modified.IsSet() || (state.modified != 0 && modified.Holds(state.modified)));
}

bool SearchQuery::MatchesFacts(ItemFacts const &facts) const {
    return facts.kind == ItemFacts::Kind::Image && width.Holds(facts.width) && height.Holds(facts.height) &&
           channels.Holds(facts.channels) && slices.Holds(facts.slices) && frames.Holds(facts.frames) &&
           (dataTypes == 0 || (facts.dataType & dataTypes) != 0) &&
           (format.empty() || PathMatchSpec(facts.format, "*" + format + "*"));
}

bool SearchQuery::FindsFolders() const {
    return (kind == Kind::Any || kind == Kind::Folder) && !NeedsFacts() && !NeedsState();
}

} // namespace zelvar
