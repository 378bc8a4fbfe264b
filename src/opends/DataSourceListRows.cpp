// The rows of connections and of favourites, which change while they are shown; the list itself stands in
// DataSourceList.cpp.
#include "zelvar/base/Translation.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/ConnectionRows.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/NewConnectionItem.h"
#include "zelvar/platform/ui/ModalLoop.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QMenu>

#include <algorithm>
#include <map>

namespace zelvar {

namespace {

constexpr int kFirstFavoriteGroup = 100;

} // namespace

void DataSourceList::OfferConnections() { m_connections = std::make_unique<ConnectionRows>(*this); }

void DataSourceList::ListConnectionsAgain(std::set<DString> const &changed, DString const &select) {
    m_keepsSelection = true;
    std::map<DString, RefItemPtr<DataSourceItem>> former;
    int const rowBefore = GetNextItem(-1, LVNI_SELECTED);
    RefItemPtr<DataSourceItem> const selected = ItemAt(rowBefore);
    // From the last on, so that the numbers of the rows before stay valid.
    for (int row = GetItemCount() - 1; row >= 0; --row) {
        if (GetItemGroup(row) != kGroupDataSources)
            continue;
        former[ItemAt(row)->GetName()] = ItemAt(row);
        m_rows.erase(m_rows.begin() + row);
        DeleteItem(row);
    }
    auto const first = static_cast<std::ptrdiff_t>(m_rows.size());
    CreateDataSourcesFromTemplates();
    int toSelect = -1;
    int toFocus = rowBefore; // of the connection that is closed, or the one behind it that is gone
    for (auto row = m_rows.begin() + first; row != m_rows.end(); ++row) {
        DString const name = (*row)->GetName();
        if (auto const at = former.find(name); at != former.end() && !changed.contains(name))
            *row = at->second;
        if (select.empty() ? *row == selected : name == select)
            toSelect = static_cast<int>(row - m_rows.begin());
        if (selected != nullptr && name == selected->GetName())
            toFocus = static_cast<int>(row - m_rows.begin());
    }
    UpdateListRows(kGroupDataSources);
    bool const isSame = ItemAt(toSelect) == selected;
    if (toSelect >= 0 && isSame)
        SetItemState(toSelect, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    m_keepsSelection = false;
    if (toSelect >= 0 && !isSame)
        SetItemState(toSelect, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    else if (toSelect < 0 && SelectedRows().empty())
        Tell(WM_DS_DATA_SOURCE_SELECTED); // what was shown is no more
    if (toSelect < 0 && toFocus >= first)
        SetItemState(std::min(toFocus, GetItemCount() - 1), LVIS_FOCUSED, LVIS_FOCUSED);
    if (toSelect >= 0)
        EnsureVisible(toSelect);
}

bool DataSourceList::IsConnectionOpen(DString const &name) const {
    return std::any_of(m_rows.begin(), m_rows.end(), [&](RefItemPtr<DataSourceItem> const &row) {
        auto const *const item = dynamic_cast<TemplDataSourceItem const *>(row.get());
        return item != nullptr && item->GetNode() != nullptr && item->GetName() == name;
    });
}

bool DataSourceList::ActivateRow() {
    if (m_favorites != nullptr && m_favorites->Activate())
        return true;
    bool const makes = m_connections != nullptr && IsNewConnection(ItemAt(GetNextItem(-1, LVNI_SELECTED)).get());
    if (makes)
        m_connections->MakeSoon();
    return makes;
}

void DataSourceList::OfferFavorites(FavoriteActions actions) {
    m_favorites = std::make_unique<FavoriteRows>(*this, std::move(actions));
}

/// Those of favourites stand behind the one that favourites without a group have.
void DataSourceList::ShowGroups(std::vector<DString> const &ofFavorites) {
    RemoveAllGroups();
    for (int const group :
         {kGroupDrives, kGroupNetworkDrives, kGroupDataSources, kGroupFavorites, kGroupRecent, kGroupNetwork}) {
        InsertGroup(Translated(DataSourceGroupName(group)), group);
        for (std::size_t i = 0; group == kGroupFavorites && i < ofFavorites.size(); ++i)
            InsertGroup(ofFavorites[i], kFirstFavoriteGroup + static_cast<int>(i));
    }
}

void DataSourceList::ListFavoritesAgain() {
    m_keepsSelection = true;
    RefItemPtr<DataSourceItem> const selected = ItemAt(GetNextItem(-1, LVNI_SELECTED));
    // From the last on, so that the numbers of the rows before stay valid.
    for (int row = GetItemCount() - 1; row >= 0; --row)
        if (dynamic_cast<FavoriteItem const *>(ItemAt(row).get()) != nullptr) {
            m_rows.erase(m_rows.begin() + row);
            DeleteItem(row);
        }
    std::vector<RefItemPtr<FavoriteItem>> const items = m_favorites->Items();
    std::vector<DString> groups;
    for (RefItemPtr<FavoriteItem> const &item : items) {
        DString const &group = item->Entry().group;
        auto const at = std::find(groups.begin(), groups.end(), group) - groups.begin();
        item->SetGroup(group.empty() ? static_cast<int>(kGroupFavorites) : kFirstFavoriteGroup + static_cast<int>(at));
        if (!group.empty() && at == static_cast<std::ptrdiff_t>(groups.size()))
            groups.push_back(group);
    }
    ShowGroups(groups);
    int toSelect = -1;
    for (RefItemPtr<FavoriteItem> const &item : items) {
        if (item.get() == selected.get())
            toSelect = static_cast<int>(m_rows.size());
        m_rows.push_back(item);
        AppendListRow(m_rows.size() - 1);
    }
    if (toSelect >= 0) {
        SetItemState(toSelect, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
        EnsureVisible(toSelect);
    }
    m_keepsSelection = false;
}

bool DataSourceList::AddFavorite(RefItemPtr<DataSourceItem> item) {
    if (IsFavorite(item))
        return true;
    DString const path = item->GetPath();
    if (m_favorites != nullptr) {
        if (!path.empty())
            m_favorites->Add({.target = path});
        return true;
    }
    m_rows.push_back(std::move(item));
    UpdateListRows(kGroupFavorites);
    if (!path.empty())
        AddFavoriteDir(path);
    return true;
}

bool DataSourceList::IsFavorite(RefItemPtr<DataSourceItem> const &item) {
    return item != nullptr && Favorites::Contains(item->GetPath());
}

void DataSourceList::AddFavoriteDir(DString const &path) { Favorites::Add(path); }

void DataSourceList::RemoveFavoriteDir(DString const &path) { Favorites::Remove(path); }

bool DataSourceList::OnContextMenu(QPoint screenPoint) {
    if (m_connections != nullptr && m_connections->RunMenu(screenPoint))
        return true;
    if (m_favorites != nullptr && m_favorites->RunMenu(screenPoint))
        return true;
    if (SelectedFavorites().empty())
        return OfferRetry(screenPoint);
    QMenu menu(this);
    QAction const *const remove = menu.addAction(platform::Shown("Delete Favorite"));
    if (platform::RunMenu(menu, screenPoint) == remove)
        OnDeleteFavorite();
    return true;
}

bool DataSourceList::OfferRetry(QPoint screenPoint) {
    ItemList items;
    GetSelectedItems(items);
    auto const *const tree =
        items.size() == 1 ? dynamic_cast<TemplDataSourceItem const *>(items.front().get()) : nullptr;
    if (tree == nullptr || !tree->GetFailure().IsSet())
        return false;
    QMenu menu(this);
    QAction const *const retry = menu.addAction(platform::Shown("Retry"));
    if (platform::RunMenu(menu, screenPoint) == retry)
        ResetSelectedItems();
    return true;
}

void DataSourceList::OnDeleteFavorite() {
    std::vector<int> rows = SelectedFavorites();
    // From the last on, so that the numbers of the rows before stay valid.
    std::reverse(rows.begin(), rows.end());
    for (int const row : rows) {
        // What is not open yet has an address and no path.
        auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(ItemAt(row).get());
        RemoveFavoriteDir(tree != nullptr && !tree->IsOpen() ? tree->GetSource() : ItemAt(row)->GetPath());
        m_rows.erase(m_rows.begin() + row);
        DeleteItem(row);
    }
}

} // namespace zelvar
