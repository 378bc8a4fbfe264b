#include "zelvar/opends/OpenFavorites.h"

#include "zelvar/base/Translation.h"
#include "zelvar/opends/BasketStrip.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/NamedData.h"
#include "zelvar/opends/OpenParts.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceFinder.h"
#include "zelvar/opends/PlaceOpener.h"
#include "zelvar/opends/SelectionOptions.h"
#include "zelvar/opends/search/StoredSearch.h"

#include <optional>

namespace zelvar {

OpenFavorites::OpenFavorites(DlgOpenDS &dialog, OpenParts &parts, SelectionOptions &options, PlaceFinder const &places)
    : m_dialog(dialog), m_parts(parts), m_options(options), m_places(places) {
    m_dialog.SourceList()->OfferFavorites({.open = [this](Favorite const &favorite) { Open(favorite); },
                                           .openFolder = [this](Favorite const &favorite) { OpenFolder(favorite); }});
}

void OpenFavorites::Add(ItemList const &items) {
    if (!m_options.IsUpdated())
        return;
    m_options.Take();
    for (RefItemPtr<DataSourceItem> const &item : items) {
        bool const isPlace = item->IsFolder();
        m_dialog.SourceList()->OfferedFavorites()->Add(
            {.kind = isPlace ? Favorite::Kind::Place : Favorite::Kind::Data,
             .target = isPlace ? item->GetPath() : m_options.MonikerOf(*item)});
    }
}

void OpenFavorites::AddSearch() {
    if (std::optional<StoredSearch> const search = m_parts.Search()->Searched(); search)
        m_dialog.SourceList()->OfferedFavorites()->Add(
            {.kind = Favorite::Kind::Search, .target = search->ToText(), .name = search->InWords()});
}

void OpenFavorites::Open(Favorite const &favorite) {
    switch (favorite.kind) {
    case Favorite::Kind::Data: {
        DError error;
        bool const isOfServer = PlaceOpener::IsFor(favorite.target); // nothing waits for one
        if (isOfServer || m_parts.Named() == nullptr)
            m_dialog.GoToDir(favorite.target, true);
        else if (!m_parts.Named()->Show({favorite.target}, &error))
            m_places.Refuse(favorite.target, error);
        break;
    }
    case Favorite::Kind::Basket:
        OpenBasket(favorite.target);
        break;
    case Favorite::Kind::Search:
        OpenSearch(favorite.target);
        break;
    case Favorite::Kind::Place:
        break; // its selection has listed it
    }
}

void OpenFavorites::OpenFolder(Favorite const &favorite) {
    if (RefItemPtr<DataSourceItem> const item = m_places.Find(favorite.target, true); item != nullptr)
        m_places.ShowParent(item);
}

void OpenFavorites::OpenBasket(DString const &file) {
    if (m_parts.Basket() == nullptr)
        Report::UserNotification(Translated("Here one item is picked: a basket is of no use"));
    else if (!m_parts.Basket()->Load(file))
        Report::UserNotification(Translated("'%s' is no list of monikers"), file.c_str());
}

void OpenFavorites::OpenSearch(DString const &text) {
    std::optional<StoredSearch> const search = StoredSearch::FromText(text);
    if (!search || m_parts.Search() == nullptr)
        return;
    if (RefItemPtr<DataSourceItem> const place = m_places.Find(search->place, true); place != nullptr) {
        m_places.Show(place);
        m_parts.Search()->Begin(search->draft);
    }
}

} // namespace zelvar
