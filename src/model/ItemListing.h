#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/model/datasets/DataSetFolding.h"
#include "zelvar/model/listing/ListingOrder.h"

#include <functional>
#include <optional>
#include <system_error>
#include <vector>

namespace zelvar {

/// What to list, and how, for scripts: the rules are those of the dialog's lists.
struct ItemListingOptions {
    /// Folders and containers alone. Else items that can be picked and, unless `recursive`, folders and containers too.
    bool foldersOnly = false;
    bool recursive = false; ///< enters every folder and container below, depth first
    DString filter{};       ///< mask for plain files, as "*.tif;*.img"; empty for all
    DString driverId{};     ///< the driver that containers are limited to; empty for any
    int nodeMask = 0;       ///< driver nodes to list; 0 for all data
    ListingSort sort = ListingSort::None;
    bool descending = false;
    std::size_t most = 0; ///< it ends with so many items, before they are sorted; 0 for all
    DLGTemplate purpose = DT_DATA;
    DataSourceItem::ICancel *cancel = nullptr; ///< not owned
    DataSetFolding folding{};                  ///< of folders of the file system
    /// Hears of each place that was not read, or not to its end: of `place` itself, and of what was to be entered
    /// below.
    std::function<void(DataSourceItem &place, std::error_code error)> onUnread{};
};

/// One line of a listing.
struct ListedItem {
    enum class Kind { Folder, Container, File, Node, DataSet, Series };
    Kind kind = Kind::File;
    std::int64_t size = -1; ///< bytes, -1 if unknown
    std::optional<SystemTime> time{};
    DString name{};
    DString path{};
    RefItemPtr<DataSourceItem> item{};
};

/// "folder", "container", "file", "node", "dataset" or "series".
[[nodiscard]] ZELVAR_API char const *ToText(ListedItem::Kind kind);
[[nodiscard]] ZELVAR_API ListedItem::Kind KindOf(DataSourceItem const &item);

/// The facts that order an item in a list by that key.
[[nodiscard]] ZELVAR_API ListingFacts FactsOf(DataSourceItem const &item, ListingSort sort);

/// The line of an item.
[[nodiscard]] ZELVAR_API ListedItem Listed(RefItemPtr<DataSourceItem> item);

/// Lists what lies in `place`. What cannot be read is left out; a listing that was stopped is shorter, and nobody hears
/// of that.
[[nodiscard]] ZELVAR_API std::vector<ListedItem> ListItems(RefItemPtr<DataSourceItem> const &place,
                                                           ItemListingOptions const &options);

} // namespace zelvar
