#include "zelvar/model/ItemListing.h"

#include "zelvar/data/RequestScope.h"
#include "zelvar/model/FolderVisits.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/TemplDataSourceItem.h"

#include <algorithm>

namespace zelvar {

namespace {

using Items = std::vector<RefItemPtr<DataSourceItem>>;

constexpr int kAllData = 0xEE; // every type bit but those of containers and folders

bool IsStopped(ItemListingOptions const &options) { return options.cancel != nullptr && options.cancel->IsCanceled(); }

RequestScope::StopQuestion StopOf(ItemListingOptions const &options) {
    return [&options] { return IsStopped(options); };
}

void Tell(ItemListingOptions const &options, DataSourceItem &place, std::error_code error) {
    if (options.onUnread && !IsStopped(options))
        options.onUnread(place, error);
}

/// Whether nobody found out in time if something lies in it.
bool IsUnknown(DataSourceItem const &item) {
    auto const *const file = dynamic_cast<NtwDataSourceItem const *>(&item);
    return file != nullptr && file->IsUnclassified();
}

bool IsPlainFolder(DataSourceItem const &item) {
    auto const *const folder = dynamic_cast<NtwDataSourceItem const *>(&item);
    return folder != nullptr && folder->GetType() == NtwDataSourceItem::TYPE_FOLDER;
}

bool IsListed(DataSourceItem const &item, ItemListingOptions const &options) {
    if (options.foldersOnly)
        return item.IsFolder();
    return item.IsFile(options.nodeMask) || (!options.recursive && item.IsFolder());
}

/// Lists a tree that a driver serves, which tells nothing of a reader that was lost with a part of it.
template <class List>
std::error_code ListTree(ItemListingOptions const &options, List const &list) {
    RequestScope const scope(RequestKind::List, StopOf(options));
    std::error_code const error = list();
    return !error && scope.IsUnanswered() ? std::make_error_code(std::errc::io_error) : error;
}

/// The children of one folder behind `found`, those to enter next behind `below`.
void ListOne(DataSourceItem &folder, ItemListingOptions const &options, Items &found, Items &below) {
    int const wanted = options.nodeMask != 0 ? options.nodeMask : kAllData;
    auto const take = [&](RefItemPtr<DataSourceItem> child) {
        if (options.recursive && child->IsFolder())
            below.push_back(child);
        if (options.recursive && IsUnknown(*child))
            Tell(options, *child, std::make_error_code(std::errc::io_error));
        if (IsListed(*child, options))
            found.push_back(std::move(child));
        return true;
    };
    auto const list = [&] {
        return ForEachChild(folder, options.cancel, options.filter.c_str(), options.driverId.c_str(), wanted,
                            options.purpose, take);
    };
    if (std::error_code const error = IsPlainFolder(folder) ? list() : ListTree(options, list))
        Tell(options, folder, error);
}

Items Collect(RefItemPtr<DataSourceItem> const &place, ItemListingOptions const &options) {
    Items found;
    FolderVisits visits;
    Items waiting{place}; // the next folder to enter last
    while (!waiting.empty() && !IsStopped(options)) {
        RefItemPtr<DataSourceItem> const folder = std::move(waiting.back());
        waiting.pop_back();
        if (!visits.Enter(*folder))
            continue;
        std::size_t const first = waiting.size();
        ListOne(*folder, options, found, waiting);
        std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(first), waiting.end());
    }
    return found;
}

Items Sorted(Items items, ItemListingOptions const &options) {
    if (options.sort == ListingSort::None)
        return items;
    ListingOrder order;
    order.Reset(options.sort, true);
    for (RefItemPtr<DataSourceItem> const &item : items)
        order.Add(FactsOf(*item, options.sort));
    Items sorted;
    sorted.reserve(items.size());
    for (std::uint32_t const number : order.AscendingOrder())
        sorted.push_back(std::move(items[number]));
    if (options.descending)
        std::reverse(sorted.begin(), sorted.end());
    return sorted;
}

} // namespace

char const *ToText(ListedItem::Kind kind) {
    switch (kind) {
    case ListedItem::Kind::Folder:
        return "folder";
    case ListedItem::Kind::Container:
        return "container";
    case ListedItem::Kind::File:
        return "file";
    case ListedItem::Kind::Node:
        break;
    }
    return "node";
}

ListedItem::Kind KindOf(DataSourceItem const &item) {
    if (auto const *const shellItem = dynamic_cast<NtwDataSourceItem const *>(&item)) {
        if (shellItem->GetType() == NtwDataSourceItem::TYPE_REPOSITORY_FILE)
            return ListedItem::Kind::Container;
        return shellItem->IsFolder() ? ListedItem::Kind::Folder : ListedItem::Kind::File;
    }
    if (!item.IsFolder())
        return ListedItem::Kind::Node;
    return item.IsFile(BDINode_Folder | BDINode_Directory) ? ListedItem::Kind::Folder : ListedItem::Kind::Container;
}

ListingFacts FactsOf(DataSourceItem const &item, ListingSort sort) {
    ListingFacts facts;
    if (sort == ListingSort::Name)
        facts.name = item.GetName();
    if (sort == ListingSort::Size || sort == ListingSort::Date)
        facts.isFileSystem = item.GetDataSourceType() == DataSourceItem::DST_FILE_SYSTEM;
    if (sort == ListingSort::Size)
        facts.size = item.GetFileSize();
    if (sort == ListingSort::Date)
        facts.hasTime = item.GetModificationTime(facts.time);
    return facts;
}

std::vector<ListedItem> ListItems(RefItemPtr<DataSourceItem> const &place, ItemListingOptions const &options) {
    std::vector<ListedItem> lines;
    if (!place)
        return lines;
    RequestScope const scope(RequestKind::List, StopOf(options));
    Items const items = Sorted(Collect(place, options), options);
    lines.reserve(items.size());
    for (RefItemPtr<DataSourceItem> const &item : items) {
        ListedItem &line = lines.emplace_back();
        line.kind = KindOf(*item);
        line.size = item->GetFileSize();
        if (SystemTime time; item->GetModificationTime(time))
            line.time = time;
        line.name = item->GetName();
        line.path = item->GetPath();
        line.item = item;
    }
    return lines;
}

} // namespace zelvar
