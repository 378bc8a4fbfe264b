#include "zelvar/model/NtwDataSourceItemItr.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIDrvrMngr.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/ProbeAhead.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SystemImages.h"
#include "zelvar/platform/os/IconRule.h"

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

bool IsProbedElsewhere(ShellChild const &child) {
    return child.kind == ShellKind::File && ProbeAhead::IsWorthwhile() &&
           !BDIDrvrMngr::Instance()->CandidatesFor(child.name).empty();
}

/// A file that is called like nothing in particular: only a look into it tells what it is.
bool IsNameless(ShellChild const &child) {
    return child.kind == ShellKind::File && !platform::SaysWhatItIs(child.name) &&
           BDIDrvrMngr::Instance()->CandidatesFor(child.name).empty();
}

template <class Test>
std::vector<DString> PathsOf(ShellNamespace const &shell, std::vector<ShellChild> const &children, Test const &test) {
    std::vector<DString> paths;
    for (ShellChild const &child : children)
        if (test(child))
            paths.push_back(shell.Path(child.id));
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
    IconLookup icons(shell);
    bool stopped = false;
    auto const isStopped = [&] { return stopped = stopped || (cancel != nullptr && cancel->IsCanceled()); };
    // The stop signal is asked once a child: here for those that are left out, below for the others.
    auto const isWanted = [&](std::string_view name) {
        if (!stopped && !IsShortcut(name) && (!filtering || PathMatchSpec(name, mask)))
            return ShellNamespace::Wish::Yes;
        return isStopped() ? ShellNamespace::Wish::Stop : ShellNamespace::Wish::No;
    };
    // Whether a driver can open the file is asked once, when the item is made.
    auto const addItem = [&](ShellChild const &child, NtwDataSourceItem::Asked asked) {
        if (RefItemPtr<DataSourceItem> item{
                NtwDataSourceItem::CreateChild(child, parent, driverId, icons.IndexOf(child), asked)})
            m_items.push_back(std::move(item));
    };
    using Asked = NtwDataSourceItem::Asked;
    // A driver that was named is asked about each file, whatever that is called.
    bool const looksInto = driverId == nullptr || *driverId == '\0';
    // Files that drivers elsewhere will be asked about wait for each other, and what comes behind them waits too.
    std::vector<ShellChild> waiting;
    auto const addWaiting = [&] {
        auto const isNameless = [&](ShellChild const &child) { return looksInto && IsNameless(child); };
        ProbeAhead const ahead(PathsOf(shell, waiting, IsProbedElsewhere), PathsOf(shell, waiting, isNameless));
        for (ShellChild const &child : waiting) {
            if (!isNameless(child))
                addItem(child, Asked::AmongOthers);
            else
                addItem(child, ahead.IsFound(shell.Path(child.id)) ? Asked::FoundContainer : Asked::ByNobody);
        }
        waiting.clear();
    };
    m_error = shell.Enumerate(
        folder, ShellNamespace::Purpose::Browse,
        [&](ShellChild &&child) {
            if (isStopped())
                return false;
            if (child.kind != ShellKind::File && IsProductCache(child.name))
                return true;
            if (waiting.empty() && !IsProbedElsewhere(child) && !(looksInto && IsNameless(child))) {
                addItem(child, Asked::AmongOthers);
                return true;
            }
            waiting.push_back(std::move(child));
            if (waiting.size() >= kTogether)
                addWaiting();
            return true;
        },
        isWanted);
    addWaiting();
    CreateCursor();
}

} // namespace zelvar
