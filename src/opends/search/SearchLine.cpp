#include "zelvar/opends/search/SearchLine.h"

#include "zelvar/base/Translation.h"

namespace zelvar {

DString SearchInWords(SearchPhase phase, SearchProgress const &progress, std::int64_t shown) {
    auto const folders = static_cast<long long>(progress.folders);
    auto const found = static_cast<long long>(shown);
    DString text = Format(Translated("%lld found", "%lld found", found), found);
    text += ", " + Format(Translated("%lld folder searched", "%lld folders searched", folders), folders);
    if (auto const asked = static_cast<long long>(progress.asked); asked > 0)
        text += ", " + Format(Translated("%lld file looked into", "%lld files looked into", asked), asked);
    if (phase == SearchPhase::Searching)
        text = Format(Translated("Searching: %s ..."), text.c_str());
    else if (phase == SearchPhase::Stopped)
        text = Format(Translated("Stopped: %s"), text.c_str());
    if (auto const left = static_cast<long long>(progress.leftRemote); left > 0)
        text +=
            "; " +
            Format(Translated("%lld place on the network left out", "%lld places on the network left out", left), left);
    if (auto const unread = static_cast<long long>(progress.unread); unread > 0)
        text += "; " +
                Format(Translated("%lld folder not read (%s: %s)", "%lld folders not read (the first: %s: %s)", unread),
                       unread, progress.firstUnread.c_str(), progress.firstWhy.message().c_str());
    return text;
}

DString FolderBelow(std::string_view folder, std::string_view root) {
    if (folder == root)
        return ".";
    bool const isBelow = folder.size() > root.size() && folder.starts_with(root);
    if (isBelow && !root.empty() && root.back() == '/')
        return DString(folder.substr(root.size()));
    if (isBelow && folder[root.size()] == '/')
        return DString(folder.substr(root.size() + 1));
    return DString(folder);
}

} // namespace zelvar
