#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/listing/ListingOrder.h"
#include "zelvar/model/listing/RowPlan.h"

#include <vector>

namespace zelvar {

/// Path of the folder, container or node that holds the item.
[[nodiscard]] DString FolderPathOf(DataSourceItem &item);

/// Which rows results get that come one batch after the other: as they come, or sorted by a column of the list.
class ResultOrder {
public:
    using Item = RefItemPtr<DataSourceItem>;
    enum class By { Arrival, Name, Size, Date, Folder };

    /// Forgets all items.
    void Begin(By by, bool ascending);
    /// The rows of further items, to be inserted one after the other.
    [[nodiscard]] std::vector<PendingRow<Item>> Add(std::vector<Item> items);

private:
    ListingOrder m_order;
    By m_by = By::Arrival;
};

} // namespace zelvar
