#include "zelvar/opends/ResultOrder.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/model/ItemListing.h"

#include <utility>

namespace zelvar {

namespace {

ListingSort SortOf(ResultOrder::By by) {
    switch (by) {
    case ResultOrder::By::Name:
    case ResultOrder::By::Folder:
        return ListingSort::Name;
    case ResultOrder::By::Size:
        return ListingSort::Size;
    case ResultOrder::By::Date:
        return ListingSort::Date;
    case ResultOrder::By::Arrival:
        break;
    }
    return ListingSort::None;
}

} // namespace

DString FolderPathOf(DataSourceItem &item) {
    RefItemPtr<DataSourceItem> const parent = item.GetParent();
    return parent == nullptr ? DString(ParentPathOf(item.GetPath())) : parent->GetPath();
}

void ResultOrder::Begin(By by, bool ascending) {
    m_by = by;
    m_order.Reset(SortOf(by), ascending);
}

std::vector<PendingRow<ResultOrder::Item>> ResultOrder::Add(std::vector<Item> items) {
    std::size_t const before = m_order.Count();
    ListingSort const sort = SortOf(m_by);
    for (Item const &item : items)
        m_order.Add(m_by == By::Folder ? ListingFacts{.name = FolderPathOf(*item)} : FactsOf(*item, sort));
    std::vector<PlacedItem> placed;
    m_order.Place(placed);
    std::vector<PendingRow<Item>> rows;
    rows.reserve(placed.size());
    for (PlacedItem const &place : placed)
        rows.push_back({place.row, std::move(items[place.item - before])});
    return rows;
}

} // namespace zelvar
