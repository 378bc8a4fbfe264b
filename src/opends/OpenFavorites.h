#pragma once

#include "zelvar/model/DataSourceItem.h"
#include "zelvar/opends/DlgOpenDS.h"

#include <list>

namespace zelvar {

class OpenParts;
class PlaceFinder;
class SelectionOptions;
struct Favorite;

/// What the open dialog does about favourites of any kind: it makes them of what is selected, searched for or shown,
/// and opens them. User-interface thread.
class OpenFavorites {
public:
    using ItemList = std::list<RefItemPtr<DataSourceItem>>;
    /// Offers them in the list of data sources. All of these outlive it.
    OpenFavorites(DlgOpenDS &dialog, OpenParts &parts, SelectionOptions &options, PlaceFinder const &places);

    /// Places as such, all else as what opens it with the options that are set.
    void Add(ItemList const &items);
    /// What was searched for last.
    void AddSearch();
    void Open(Favorite const &favorite);
    void OpenFolder(Favorite const &favorite); ///< that it lies in

private:
    // False if it is not there, of which the user has been told.
    [[nodiscard]] bool OpenData(DString const &moniker);
    /// The node of a container on this machine; null for anything else.
    [[nodiscard]] RefItemPtr<DataSourceItem> FindNode(DString const &moniker) const;
    /// Shows what a node of a container on this machine lies in; false for anything else.
    [[nodiscard]] bool ShowNode(DString const &moniker);
    [[nodiscard]] bool OpenBasket(DString const &file);
    [[nodiscard]] bool OpenSearch(DString const &text);

    DlgOpenDS &m_dialog;
    OpenParts &m_parts;
    SelectionOptions &m_options;
    PlaceFinder const &m_places;
};

} // namespace zelvar
