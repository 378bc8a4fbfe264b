#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/XMLNode.h"
#include "zelvar/model/DataSourceItem.h"

#include <boost/shared_ptr.hpp>

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
    [[nodiscard]] DList<boost::shared_ptr<Item>> const &GetItems() const { return m_items; }

private:
    DList<boost::shared_ptr<Item>> m_items;
};

} // namespace zelvar
