#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/data/StopSignal.h"
#include "zelvar/model/DataSourceItem.h"
#include "zelvar/xml/XMLNode.h"

#include <boost/shared_ptr.hpp>
#include <list>

namespace zelvar {

/// Data source extras: which import options and which option page belong to files of which raster driver. Read from the
/// "DataSourceExtras" files of the templates directory. User-interface thread.
class ZELVAR_API DataSourceExtras {
public:
    struct Item {
        DString ItemDataSource{};                 ///< kept, not used for matching
        DString ItemDriver{};                     ///< id of the raster driver
        DString ItemTemplatePath{};               ///< absolute path of the option page
        boost::shared_ptr<XMLNode> ItemOptions{}; ///< a copy of the whole element
    };

    /// Appends the entries of all files; always true. What cannot be read counts as absent.
    bool Load();
    /// The first entry whose driver owns the item's file, or null. Owned by this list.
    Item *GetDSOptions(RefItemPtr<DataSourceItem> const &item);
    /// The entry for the first of the items that one applies to; null if there is none, or once `stop` is set. Asks
    /// drivers about many items at once, and no further than that item. Any thread, on a list of its own.
    [[nodiscard]] boost::shared_ptr<Item> FindFirstOptions(std::list<RefItemPtr<DataSourceItem>> const &items,
                                                           StopSignal const &stop) const;
    [[nodiscard]] DList<boost::shared_ptr<Item>> const &GetItems() const { return m_items; }

private:
    DList<boost::shared_ptr<Item>> m_items;
};

} // namespace zelvar
