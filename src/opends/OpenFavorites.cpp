#include "zelvar/opends/OpenFavorites.h"

#include "zelvar/base/Translation.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/opends/BasketStrip.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/NamedData.h"
#include "zelvar/opends/OpenParts.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceFinder.h"
#include "zelvar/opends/SelectionOptions.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/WantedRow.h"
#include "zelvar/opends/search/StoredSearch.h"

#include <QtCore/QPointer>

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
    std::optional<StoredSearch> const search = m_parts.Search()->Searched();
    if (!search)
        Report::UserNotification(Translated("What was searched has no path: the search cannot be kept"));
    else
        m_dialog.SourceList()->OfferedFavorites()->Add(
            {.kind = Favorite::Kind::Search, .target = search->ToText(), .name = search->InWords()});
}

void OpenFavorites::Open(Favorite const &favorite) {
    QPointer<FavoriteRows> const rows(m_dialog.SourceList()->OfferedFavorites());
    bool isThere = true;
    switch (favorite.kind) {
    case Favorite::Kind::Data:
        isThere = OpenData(favorite.target);
        break;
    case Favorite::Kind::Basket:
        isThere = OpenBasket(favorite.target);
        break;
    case Favorite::Kind::Search:
        isThere = OpenSearch(favorite.target);
        break;
    case Favorite::Kind::Place:
        return; // its selection has listed it
    }
    if (!rows.isNull()) // a message may have been the last one
        rows->SetDead(favorite, !isThere);
}

bool OpenFavorites::OpenData(DString const &moniker) {
    ServerWaits &waits = *m_dialog.Waits();
    if (waits.GoToData(moniker, true)) // nothing waits for a server
        return true;
    if (ShowNode(moniker))
        return true;
    DError error;
    if (m_parts.Named() == nullptr) {
        waits.Want(moniker);
        m_dialog.GoToDir(BDIMoniker(moniker, nullptr).GetSource(), true);
    } else if (!m_parts.Named()->Show({moniker}, &error)) {
        m_places.Refuse(moniker, error);
        return false;
    }
    return true;
}

RefItemPtr<DataSourceItem> OpenFavorites::FindNode(DString const &moniker) const {
    DString const file = BDIMoniker(moniker, nullptr).FindFile();
    if (file.empty() || file.size() == moniker.size())
        return nullptr;
    // Options of the driver may stand behind those that name the node.
    for (DString const &name : WithFewerOptions(moniker)) {
        RefItemPtr<DataSourceItem> node = name.size() > file.size() ? m_places.Find(name, false) : nullptr;
        if (node == nullptr)
            continue;
        node->BuildParents();
        if (node->GetParent() != nullptr && node->GetPath() == name)
            return node;
    }
    return nullptr;
}

bool OpenFavorites::ShowNode(DString const &moniker) {
    RefItemPtr<DataSourceItem> const node = FindNode(moniker);
    if (node == nullptr)
        return false;
    DString const name = node->GetPath();
    if (m_parts.Named() != nullptr && name.size() < moniker.size())
        m_parts.Named()->Note(name, moniker.substr(name.size() + 1));
    m_dialog.Waits()->Want(name);
    // Named, it lies in the container itself: in which group of it only a look tells.
    RefItemPtr<DataSourceItem> const listed = PlaceFinder::FindBelow(node->GetParent(), name);
    m_places.ShowParent(listed == nullptr ? node : listed);
    return true;
}

void OpenFavorites::OpenFolder(Favorite const &favorite) {
    if (RefItemPtr<DataSourceItem> const item = m_places.Find(favorite.target, true); item != nullptr)
        m_places.ShowParent(item);
}

bool OpenFavorites::OpenBasket(DString const &file) {
    if (m_parts.Basket() == nullptr) {
        Report::UserNotification(Translated("Here one item is picked: a basket is of no use"));
    } else if (!m_parts.Basket()->Load(file)) {
        Report::UserNotification(Translated("'%s' is no list of monikers"), file.c_str());
        return false;
    }
    return true;
}

bool OpenFavorites::OpenSearch(DString const &text) {
    std::optional<StoredSearch> const search = StoredSearch::FromText(text);
    if (!search || m_parts.Search() == nullptr)
        return true;
    ItemList places;
    for (DString const &path : search->places)
        if (RefItemPtr<DataSourceItem> const place = m_places.Find(path, true); place != nullptr)
            places.push_back(place);
    if (places.empty())
        return false;
    m_places.Show(places.front());
    if (places.size() > 1)
        m_dialog.MainList()->ResetItems(places);
    m_parts.Search()->Begin(search->draft);
    return true;
}

} // namespace zelvar
