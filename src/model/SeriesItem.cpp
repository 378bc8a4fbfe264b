#include "zelvar/model/SeriesItem.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/model/SystemImages.h"
#include "zelvar/platform/os/ShellNamespace.h"

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

DString SeriesItem::GetName() const { return m_shownName.empty() ? m_name.Text() : m_shownName; }

DString SeriesItem::GetPath() const { return AppendPath(m_folder, m_name.Text()); }

DString SeriesItem::MemberPath(std::size_t member) const {
    return AppendPath(m_folder, m_name.MemberName(m_name.ValuesAt(m_slots[member])));
}

bool SeriesItem::GetModificationTime(SystemTime &time) const {
    SystemTime const local = ToLocalTime(m_modified);
    if (m_modified == 0 || local.wYear == 0)
        return false;
    time = local;
    return true;
}

RefItemPtr<DataSourceItem> SeriesItem::Clone() {
    RefItemPtr<SeriesItem> copy(CreateItem(m_folder, m_name, m_slots, m_size, m_modified, m_parent));
    copy->m_shownName = m_shownName;
    return copy;
}

} // namespace zelvar
