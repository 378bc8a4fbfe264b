#include "zelvar/model/DataSourceItem.h"

namespace zelvar {

bool DataSourceItem::IsFile(int /*mask*/) const { return !IsFolder(); }

bool DataSourceItem::ResetFilter(char const * /*filter*/) { return false; }

bool DataSourceItem::GetModificationTime(SystemTime & /*time*/) const { return false; }

void DataSourceItemItr::First() {
    if (m_hasCursor)
        m_at = 0;
}

void DataSourceItemItr::Next() { ++m_at; }

RefItemPtr<DataSourceItem> DataSourceItemItr::GetItem() { return m_items[m_at]; }

bool DataSourceItemItr::IsValid() const { return m_hasCursor && m_at < m_items.size(); }

void DataSourceItemItr::CreateCursor() {
    m_hasCursor = true;
    m_at = static_cast<std::size_t>(-1);
}

} // namespace zelvar
