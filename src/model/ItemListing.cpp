#include "zelvar/model/ItemListing.h"

#include "zelvar/data/RequestScope.h"
#include "zelvar/model/ListingWalk.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SeriesItem.h"
#include "zelvar/model/TemplDataSourceItem.h"

#include <algorithm>

namespace zelvar {

namespace {

using Items = std::vector<RefItemPtr<DataSourceItem>>;

constexpr int kAllData = 0xEE; // every type bit but those of containers and folders

bool IsStopped(ItemListingOptions const &options) { return options.cancel != nullptr && options.cancel->IsCanceled(); }

bool IsListed(DataSourceItem const &item, ItemListingOptions const &options) {
    if (options.foldersOnly)
        return item.IsFolder();
    return item.IsFile(options.nodeMask) || (!options.recursive && item.IsFolder());
}

Items Collect(RefItemPtr<DataSourceItem> const &place, ItemListingOptions const &options) {
    Items found;
    ListingWalk walk({.recursive = options.recursive,
                      .filter = options.filter,
                      .driverId = options.driverId,
                      .nodeMask = options.nodeMask != 0 ? options.nodeMask : kAllData,
                      .purpose = options.purpose,
                      .cancel = options.cancel,
                      .folding = options.folding,
                      .onUnread = options.onUnread});
    walk.Through(place, [&](RefItemPtr<DataSourceItem> child) {
        if (IsListed(*child, options))
            found.push_back(std::move(child));
        return options.most == 0 || found.size() < options.most;
    });
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
    case ListedItem::Kind::DataSet:
        return "dataset";
    case ListedItem::Kind::Series:
        return "series";
    case ListedItem::Kind::Node:
        break;
    }
    return "node";
}

ListedItem::Kind KindOf(DataSourceItem const &item) {
    if (auto const *const shellItem = dynamic_cast<NtwDataSourceItem const *>(&item)) {
        if (shellItem->GetType() == NtwDataSourceItem::TYPE_REPOSITORY_FILE)
            return ListedItem::Kind::Container;
        if (shellItem->GetType() == NtwDataSourceItem::TYPE_DATA_FOLDER)
            return ListedItem::Kind::DataSet;
        return shellItem->IsFolder() ? ListedItem::Kind::Folder : ListedItem::Kind::File;
    }
    if (dynamic_cast<SeriesItem const *>(&item) != nullptr)
        return ListedItem::Kind::Series;
    if (!item.IsFolder())
        return ListedItem::Kind::Node;
    return item.IsFile(BDINode_Folder | BDINode_Directory) ? ListedItem::Kind::Folder : ListedItem::Kind::Container;
}

ListingFacts FactsOf(DataSourceItem const &item, ListingSort sort) {
    ListingFacts facts;
    if (sort == ListingSort::Name)
        facts.name = item.GetName();
    if (sort == ListingSort::Size || sort == ListingSort::Date)
        facts.isFileSystem = item.GetDataSourceType() == DataSourceItem::DST_FILE_SYSTEM || item.GetFileSize() >= 0;
    if (sort == ListingSort::Size)
        facts.size = item.GetFileSize();
    if (sort == ListingSort::Date)
        facts.hasTime = item.GetModificationTime(facts.time);
    return facts;
}

ListedItem Listed(RefItemPtr<DataSourceItem> item) {
    ListedItem line;
    line.kind = KindOf(*item);
    line.size = item->GetFileSize();
    if (SystemTime time; item->GetModificationTime(time))
        line.time = time;
    line.name = item->GetName();
    line.path = item->GetPath();
    line.item = std::move(item);
    return line;
}

std::vector<ListedItem> ListItems(RefItemPtr<DataSourceItem> const &place, ItemListingOptions const &options) {
    std::vector<ListedItem> lines;
    if (!place)
        return lines;
    RequestScope const scope(RequestKind::List, [&options] { return IsStopped(options); });
    Items const items = Sorted(Collect(place, options), options);
    lines.reserve(items.size());
    for (RefItemPtr<DataSourceItem> const &item : items)
        lines.push_back(Listed(item));
    return lines;
}

} // namespace zelvar
