#include "zelvar/model/ListingWalk.h"

#include "zelvar/data/RequestScope.h"
#include "zelvar/model/FoldedListing.h"
#include "zelvar/model/FolderAhead.h"
#include "zelvar/model/ListingsShared.h"
#include "zelvar/model/NtwDataSourceItem.h"

#include <algorithm>
#include <optional>
#include <tuple>

namespace zelvar {

namespace {

NtwDataSourceItem const *AsPlainFolder(DataSourceItem const &item) {
    auto const *const folder = dynamic_cast<NtwDataSourceItem const *>(&item);
    return folder != nullptr && folder->GetType() == NtwDataSourceItem::TYPE_FOLDER ? folder : nullptr;
}

bool IsPlainFolder(DataSourceItem const &item) { return AsPlainFolder(item) != nullptr; }

} // namespace

void ListingWalk::Tell(DataSourceItem &place, std::error_code error) const {
    if (error && m_options.onUnread && !IsStopped())
        m_options.onUnread(place, error);
}

std::error_code ListingWalk::List(DataSourceItem &folder, Take const &take, Items &below) {
    auto const visit = [&](RefItemPtr<DataSourceItem> child) {
        if (m_options.recursive && child->IsFolder())
            below.push_back(child);
        // Nobody found out in time whether something lies in it.
        if (m_options.recursive && IsUnclassified(*child))
            Tell(*child, std::make_error_code(std::errc::io_error));
        return take(std::move(child));
    };
    ListingsShared *const shared = IsPlainFolder(folder) ? ListingsShared::Current() : nullptr;
    ListingsShared::Key key{RefItemPtr<DataSourceItem>(&folder), m_options.filter, m_options.driverId,
                            m_options.folding};
    if (shared != nullptr)
        if (Items const *const known = shared->Find(key)) {
            std::ignore = std::all_of(known->begin(), known->end(),
                                      [&](auto const &child) { return !IsStopped() && visit(child); });
            return {};
        }
    bool const isKept = shared != nullptr && !m_options.recursive;
    Items children;
    bool isWhole = true;
    std::error_code const error =
        ForEachChild(folder, m_options.cancel, m_options.filter.c_str(), m_options.driverId.c_str(), m_options.nodeMask,
                     m_options.purpose, [&](RefItemPtr<DataSourceItem> child) {
                         if (isKept)
                             children.push_back(child);
                         return isWhole = visit(std::move(child));
                     });
    RequestScope const *const scope = RequestScope::Current();
    bool const isAnswered = scope == nullptr || !scope->IsUnanswered();
    if (isKept && isWhole && isAnswered && !error && !IsStopped())
        shared->Keep(std::move(key), std::move(children));
    return error;
}

void ListingWalk::ListOne(DataSourceItem &folder, Take const &take, Items &below) {
    if (!m_options.onUnread || IsPlainFolder(folder)) {
        Tell(folder, List(folder, take, below));
        return;
    }
    // A tree that a driver serves tells nothing of a reader that was lost with a part of it.
    RequestScope const scope(RequestKind::List, [this] { return IsStopped(); });
    std::error_code const error = List(folder, take, below);
    Tell(folder, !error && scope.IsUnanswered() ? std::make_error_code(std::errc::io_error) : error);
}

void ListingWalk::Through(RefItemPtr<DataSourceItem> const &place, Take const &take) {
    FoldedListing const folded(m_options.folding);
    std::optional<FolderAhead> ahead;
    if (m_options.recursive)
        ahead.emplace(m_options.filter);
    Items waiting{place}; // the next folder to enter last
    for (bool isPlace = true; !waiting.empty() && !IsStopped(); isPlace = false) {
        RefItemPtr<DataSourceItem> const folder = std::move(waiting.back());
        waiting.pop_back();
        if (m_options.recursive && !m_visits.Enter(*folder) && !isPlace)
            continue;
        std::size_t const first = waiting.size();
        if (NtwDataSourceItem const *const next = waiting.empty() ? nullptr : AsPlainFolder(*waiting.back());
            next != nullptr && !next->IsLink())
            ahead->Begin(next->GetId());
        ListOne(*folder, take, waiting);
        std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(first), waiting.end());
    }
}

RefItemPtr<DataSourceItem> FindBelow(RefItemPtr<DataSourceItem> const &container, std::vector<DString> const &paths,
                                     DataSourceItem::ICancel &cancel) {
    constexpr int kAnyNode = 0xFF;
    using Items = std::vector<RefItemPtr<DataSourceItem>>;
    RefItemPtr<DataSourceItem> found;
    auto best = paths.end();
    Items level{container};
    while (best != paths.begin() && !level.empty() && !cancel.IsCanceled()) {
        Items below;
        for (RefItemPtr<DataSourceItem> const &group : level)
            ListingWalk({.nodeMask = kAnyNode, .cancel = &cancel})
                .Through(group, [&](RefItemPtr<DataSourceItem> child) {
                    if (auto const rank = std::find(paths.begin(), best, child->GetPath()); rank != best) {
                        best = rank;
                        found = child;
                    }
                    if (child->IsFolder())
                        below.push_back(std::move(child));
                    return best != paths.begin();
                });
        level = std::move(below);
    }
    return found;
}

} // namespace zelvar
