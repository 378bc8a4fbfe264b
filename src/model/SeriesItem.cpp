#include "zelvar/model/SeriesItem.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/SeriesPlace.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/SystemImages.h"

namespace zelvar {

SeriesItem *SeriesItem::CreateItem(DString folder, SeriesName name, std::vector<std::uint64_t> slots, std::int64_t size,
                                   std::int64_t modified, RefItemPtr<DataSourceItem> parent) {
    if (slots.empty())
        return nullptr;
    std::unique_ptr<SeriesItem> item(new SeriesItem(std::move(name)));
    item->m_folder = std::move(folder);
    item->m_slots = std::move(slots);
    item->m_size = size;
    item->m_modified = modified;
    item->m_parent = std::move(parent);
    item->SetOwnIcon(&SystemImages(), SystemImages().Add({.name = "series", .fallback = "series"}));
    return item.release();
}

SeriesItem *SeriesItem::CreateItem(DString const &moniker, RefItemPtr<DataSourceItem> parent) {
    auto place = SeriesOf({moniker, nullptr});
    if (!place || !DoesPlaceAnswer(place->folder))
        return nullptr;
    SeriesListing listing = ListSeries(*place, Weigh::Yes);
    return CreateItem(std::move(place->folder), std::move(place->name), std::move(listing.slots), listing.size,
                      listing.modified, std::move(parent));
}

DString SeriesItem::GetName() const { return m_shownName.empty() ? m_name.Text() : m_shownName; }

DString SeriesItem::GetPath() const { return SeriesPlace{.folder = m_folder, .name = m_name}.Path(); }

DString SeriesItem::MemberPath(std::size_t member) const {
    return SeriesPlace{.folder = m_folder, .name = m_name}.MemberPath(m_slots[member]);
}

DString SeriesItem::ShownSummary() const {
    if (m_slots.size() == m_name.Slots())
        return Summary();
    return Format(Translated("%zu of %llu, missing %s"), m_slots.size(),
                  static_cast<unsigned long long>(m_name.Slots()), MissingOf(m_name, m_slots).c_str());
}

bool SeriesItem::GetModificationTime(SystemTime &time) const {
    SystemTime const local = ToLocalTime(m_modified);
    if (m_modified == 0 || local.wYear == 0)
        return false;
    time = local;
    return true;
}

void SeriesItem::BuildParents() {
    if (!m_parent)
        SetParent(RefItemPtr<DataSourceItem>(
            NtwDataSourceItem::CreateItem(m_folder.empty() ? "." : m_folder.c_str(), nullptr, nullptr)));
    if (m_parent)
        m_parent->BuildParents();
}

RefItemPtr<DataSourceItem> SeriesItem::Clone() {
    RefItemPtr<SeriesItem> copy(CreateItem(m_folder, m_name, m_slots, m_size, m_modified, m_parent));
    copy->m_shownName = m_shownName;
    return copy;
}

} // namespace zelvar
