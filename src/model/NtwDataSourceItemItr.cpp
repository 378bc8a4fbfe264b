#include "zelvar/model/NtwDataSourceItemItr.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/ProbeAhead.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SuffixFacts.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace zelvar {

using platform::ShellChild;
using platform::ShellKind;
using platform::ShellNamespace;

namespace {

bool IsShortcut(std::string_view name) {
    constexpr std::string_view kSuffix = ".lnk";
    return name.size() >= kSuffix.size() && EqualNoCase(name.substr(name.size() - kSuffix.size()), kSuffix);
}

/// Caches that the product keeps beside images: nobody must walk into them. The case of the names counts.
bool IsProductCache(std::string_view name) { return name == "_zoom_cache" || name == "_image_cache"; }

/// "*" and "*.*" name every file.
bool IsInForce(std::string_view filter) { return !filter.empty() && filter != "*" && filter != "*.*"; }

constexpr std::size_t kTogether = 128; // files to a question

/// A child that waits for what drivers say of it and of others.
struct Waiting {
    ShellChild child;
    SuffixFacts::Facts const *facts;
    DString path; ///< of one that is asked about; empty for others
};

/// The paths of those that are claimed, or of those that are not.
std::vector<DString> PathsOf(std::vector<Waiting> const &waiting, bool claimed) {
    std::vector<DString> paths;
    for (Waiting const &each : waiting)
        if (!each.path.empty() && each.facts->isClaimed == claimed)
            paths.push_back(each.path);
    return paths;
}

} // namespace

void NtwDataSourceItemItr::Fill(platform::ShellId const &folder, DataSourceItem::ICancel *cancel,
                                RefItemPtr<DataSourceItem> const &parent, char const *filter, char const *driverId) {
    ShellNamespace const &shell = ShellNamespace::Current();
    if (!DoesPlaceAnswer(shell.Path(folder))) {
        m_error = std::make_error_code(std::errc::timed_out);
        CreateCursor();
        return;
    }
    std::string_view const mask = filter == nullptr ? std::string_view() : filter;
    bool const filtering = IsInForce(mask);
    SuffixFacts suffixes(shell);
    bool stopped = false;
    auto const isStopped = [&] { return stopped = stopped || (cancel != nullptr && cancel->IsCanceled()); };
    // The stop signal is asked once a child: here for those that are left out, below for the others.
    auto const isWanted = [&](std::string_view name) {
        if (!stopped && !IsShortcut(name) && (!filtering || PathMatchSpec(name, mask)))
            return ShellNamespace::Wish::Yes;
        return isStopped() ? ShellNamespace::Wish::Stop : ShellNamespace::Wish::No;
    };
    using Asked = NtwDataSourceItem::Asked;
    // Whether a driver can open the file is asked once, when the item is made.
    auto const addItem = [&](ShellChild const &child, SuffixFacts::Facts const &facts, Asked asked) {
        if (RefItemPtr<DataSourceItem> item{NtwDataSourceItem::CreateChild(child, parent, driverId, facts.icon, asked)})
            m_items.push_back(std::move(item));
    };
    // A driver that was named is asked about each file, whatever that is called.
    bool const isAnyDriver = driverId == nullptr || *driverId == '\0';
    auto const isLookedInto = [&](SuffixFacts::Facts const &facts) { return isAnyDriver && facts.isNameless; };
    auto const askedAlone = [&](SuffixFacts::Facts const &facts) {
        if (isLookedInto(facts))
            return Asked::ByNobody;
        return isAnyDriver && !facts.isClaimed ? Asked::NotAtAll : Asked::AmongOthers;
    };
    // Files that drivers elsewhere will be asked about wait for each other, and what comes behind them waits too.
    std::vector<Waiting> waiting;
    auto const addWaiting = [&] {
        ProbeAhead const ahead(PathsOf(waiting, true), PathsOf(waiting, false));
        for (auto const &[child, facts, path] : waiting)
            addItem(child, *facts,
                    isLookedInto(*facts) && ahead.IsFound(path) ? Asked::FoundContainer : askedAlone(*facts));
        waiting.clear();
    };
    m_error = shell.Enumerate(
        folder, ShellNamespace::Purpose::Browse,
        [&](ShellChild &&child) {
            if (isStopped())
                return false;
            if (child.kind != ShellKind::File && IsProductCache(child.name))
                return true;
            SuffixFacts::Facts const &facts = suffixes.Of(child);
            bool const isAskedAbout =
                facts.isClaimed ? ProbeAhead::IsWorthwhile() : isLookedInto(facts) && ProbeAhead::HasTimeForLooks();
            if (waiting.empty() && !isAskedAbout) {
                addItem(child, facts, askedAlone(facts));
                return true;
            }
            DString path = isAskedAbout ? shell.Path(child.id) : DString();
            waiting.push_back({std::move(child), &facts, std::move(path)});
            if (waiting.size() >= kTogether)
                addWaiting();
            return true;
        },
        isWanted);
    addWaiting();
    CreateCursor();
}

} // namespace zelvar
