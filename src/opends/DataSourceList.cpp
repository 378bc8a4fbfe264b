#include "zelvar/opends/DataSourceList.h"

#include "zelvar/controls/GUITools.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/ConnectionRows.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/FavoriteFinder.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/ItemColors.h"
#include "zelvar/opends/NetworkScanner.h"
#include "zelvar/opends/NewConnectionItem.h"
#include "zelvar/opends/PlaceOpener.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zelvar {

namespace {

constexpr int kWorkerTimer = 1000;
constexpr int kWorkerInterval = 1000; // ms
constexpr int kColumnMargin = 10;     // pixels
constexpr std::chrono::milliseconds kPatience{5000};

/// Whether the selection of that row lists something.
bool HoldsItems(DataSourceItem const *item) {
    auto const *const favorite = dynamic_cast<FavoriteItem const *>(item);
    return item != nullptr && !IsNewConnection(item) && (favorite == nullptr || favorite->IsFolder());
}

template <class T>
void KeepForEver(std::shared_ptr<T> const &object) {
    static auto &kept = *new std::list<std::shared_ptr<T>>;
    kept.push_back(object);
}

} // namespace

platform::MessageId const DataSourceList::kOpenedMessage = platform::RegisterMessage();

DataSourceList::DataSourceList(QWidget *parent)
    : ReportView(parent), m_target(this), m_opener(PlaceOpener::Create()), m_timers(*this) {
    m_messages.On(kOpenedMessage, this, &DataSourceList::OnOpened);
    m_opener->SetOwner(m_target, kOpenedMessage);
    OnCreateList();
}

DataSourceList::~DataSourceList() {
    m_target.Detach();
    m_opener->Release();
    if (m_favoriteFinder != nullptr)
        m_favoriteFinder->Release();
    if (m_worker == nullptr)
        return;
    m_worker->RequestStop();
    if (m_worker->Wait(kPatience))
        return;
    // The thread goes on by itself and touches nothing but the worker, which lives as long as it does.
    m_worker->Abandon();
    KeepForEver(m_worker);
}

void DataSourceList::OnCreateList() {
    ModifyStyle(0, LVS_OWNERDRAWFIXED | LVS_SINGLESEL | LVS_NOCOLUMNHEADER | LVS_SHOWSELALWAYS);
    SetExtendedStyle(GetExtendedStyle() | LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP);
    EnableGroupView(true);
    ShowGroups({});
    InsertColumn(0, "", LVCFMT_LEFT, std::max(GetClientRect().Width() - kColumnMargin, 0));
    setFrameShape(QFrame::NoFrame); // its splitter draws one
    setAccessibleName(platform::Shown("Data sources"));
}

// ------------------------------------------------------------------------------------------------------ filling

bool DataSourceList::Fill(DLGTemplate dlgTemplate) {
    NtwDataSourceItem::Initialize();
    CreateFSDataSources(LocalDriveKinds());
    UpdateListRows(kGroupDrives);
    CreateFSDataSources(NetworkDriveKinds());
    UpdateListRows(kGroupNetworkDrives);
    if (m_favorites != nullptr) {
        ListFavoritesAgain();
    } else {
        CreateFavorites();
        UpdateListRows(kGroupFavorites);
    }
    if (PicksImageData(dlgTemplate))
        CreateDataSourcesFromTemplates();
    UpdateListRows(kGroupDataSources);
    StartWorker();
    return true;
}

bool DataSourceList::Fill(RefItemPtr<DataSourceItem> root) {
    NtwDataSourceItem::Initialize();
    // It stands alone: nothing that is found from now on comes beside it.
    m_timers.Kill(kWorkerTimer);
    if (m_worker != nullptr)
        m_worker->RequestStop();
    m_rows.push_back(std::move(root));
    return true;
}

void DataSourceList::CopyData(DataSourceList *other) {
    NtwDataSourceItem::Initialize();
    if (other != nullptr)
        m_rows = other->m_rows;
    if (m_connections == nullptr) // the other's
        std::erase_if(m_rows, [](auto const &row) { return IsNewConnection(row.get()); });
    UpdateListRows();
    StartWorker();
}

void DataSourceList::StartWorker() {
    if (m_worker == nullptr) {
        m_worker = std::make_shared<Worker>();
        m_worker->StartScanning();
    }
    m_timers.Set(kWorkerTimer, kWorkerInterval);
}

bool DataSourceList::CreateFSDataSources(std::set<platform::ShellKind> const &kinds) {
    CollectDrives(kinds, m_rows);
    return true;
}

void DataSourceList::CreateFavorites() {
    std::vector<DString> later;
    CollectFavorites(m_rows, later);
    if (!later.empty() && m_favoriteFinder == nullptr)
        m_favoriteFinder = FavoriteFinder::Start(std::move(later));
}

void DataSourceList::CreateDataSourcesFromTemplates() {
    CollectDefinitions(m_rows);
    if (m_connections != nullptr)
        m_rows.emplace_back(new NewConnectionItem);
}

void DataSourceList::AppendListRow(std::size_t index) {
    DataSourceItem const &item = *m_rows[index];
    InsertItem({.row = static_cast<int>(index), .text = TextOf(item), .group = item.GetGroup()});
}

void DataSourceList::UpdateListRows(int group) {
    for (auto index = static_cast<std::size_t>(GetItemCount()); index < m_rows.size(); ++index) {
        m_rows[index]->SetGroup(group);
        AppendListRow(index);
    }
}

void DataSourceList::UpdateListRows() {
    for (auto index = static_cast<std::size_t>(GetItemCount()); index < m_rows.size(); ++index)
        AppendListRow(index);
}

void DataSourceList::timerEvent(QTimerEvent *event) {
    if (!m_timers.Expired(kWorkerTimer, *event)) {
        ReportView::timerEvent(event);
        return;
    }
    // Asked before the results are taken: what came in between is not left behind.
    bool const isScanning = m_worker->IsScanning();
    bool const isLooking = m_favoriteFinder != nullptr && m_favoriteFinder->IsLooking();
    ItemList found;
    m_worker->TakeItems(found);
    AddFound(found, kGroupNetwork);
    if (m_favoriteFinder != nullptr) {
        ItemList favorites;
        m_favoriteFinder->TakeItems(favorites);
        AddFound(favorites, kGroupFavorites);
    }
    if (!isScanning && !isLooking)
        m_timers.Kill(kWorkerTimer);
}

void DataSourceList::AddFound(ItemList const &items, int group) {
    if (items.empty())
        return;
    m_rows.insert(m_rows.end(), items.begin(), items.end());
    UpdateListRows(group);
}

bool DataSourceList::IsDead(DataSourceItem const &item) {
    auto const *const favorite = dynamic_cast<FavoriteItem const *>(&item);
    if (favorite == nullptr)
        return false;
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(favorite->Target().get());
    return favorite->IsDead() || (tree != nullptr && tree->GetFailure().IsSet());
}

DString DataSourceList::TextOf(DataSourceItem const &item) {
    if (!IsDead(item))
        return RowTextOf(item);
    auto const &favorite = dynamic_cast<FavoriteItem const &>(item); // no other is dead
    auto const *const tree = dynamic_cast<TemplDataSourceItem const *>(favorite.Target().get());
    return MarkedName(item.GetName(), tree == nullptr ? DError() : tree->GetFailure());
}

void DataSourceList::keyPressEvent(QKeyEvent *event) {
    if (m_connections != nullptr && m_connections->OnKey(*event))
        return;
    if (m_favorites != nullptr && m_favorites->OnKey(*event))
        return;
    if (event->key() == Qt::Key_Delete)
        OnDeleteFavorite();
    else
        ReportView::keyPressEvent(event);
}

// ---------------------------------------------------------------------------------------------------- selection

RefItemPtr<DataSourceItem> DataSourceList::ItemAt(int row) const {
    return row >= 0 && row < static_cast<int>(m_rows.size()) ? m_rows[static_cast<std::size_t>(row)] : nullptr;
}

std::vector<int> DataSourceList::SelectedRows() const {
    std::vector<int> rows;
    for (int row = GetNextItem(-1, LVNI_SELECTED); row >= 0; row = GetNextItem(row, LVNI_SELECTED))
        if (HoldsItems(ItemAt(row).get()))
            rows.push_back(row);
    return rows;
}

std::vector<int> DataSourceList::SelectedFavorites() const {
    std::vector<int> rows = SelectedRows();
    // By the row's group, not the item's: a drive that became a favourite shares its item with the drive's own row.
    std::erase_if(rows, [this](int row) { return GetItemGroup(row) != kGroupFavorites; });
    return rows;
}

void DataSourceList::GetSelectedItems(ItemList &items) const {
    for (int const row : SelectedRows()) {
        auto const *const favorite = dynamic_cast<FavoriteItem const *>(ItemAt(row).get());
        if (RefItemPtr<DataSourceItem> item = favorite == nullptr ? ItemAt(row) : favorite->Target(); item != nullptr)
            items.push_back(std::move(item));
    }
}

void DataSourceList::ResetSelectedItems() {
    PrepareSelectedItems(); // one that failed is tried again
    Tell(WM_DS_DATA_SOURCE_SELECTED);
}

void DataSourceList::PrepareSelectedItems() {
    StopOpening();
    for (int const row : SelectedRows())
        if (auto *const favorite = dynamic_cast<FavoriteItem *>(ItemAt(row).get())) {
            GUITools::WaitCursor const cursor;
            std::ignore = favorite->Resolve();
            viewport()->update();
        }
    ItemList items;
    GetSelectedItems(items);
    for (RefItemPtr<DataSourceItem> const &item : items) {
        auto *const tree = dynamic_cast<TemplDataSourceItem *>(item.get());
        if (tree == nullptr || !tree->IsOnServer()) {
            QApplication::setOverrideCursor(Qt::WaitCursor);
            item->Prepare();
            QApplication::restoreOverrideCursor();
        } else if (!tree->TakeOpened()) {
            m_opening = item;
            m_opener->Open(*tree);
        }
    }
}

RefItemPtr<DataSourceItem> DataSourceList::Opening() const { return m_opener->IsBusy() ? m_opening : nullptr; }

void DataSourceList::StopOpening() {
    m_opener->Cancel();
    m_opening.reset();
}

bool DataSourceList::event(QEvent *event) { return m_messages.Dispatch(*event) || ReportView::event(event); }

void DataSourceList::OnOpened() {
    if (!m_opener->TakeAnswer())
        return; // word of an earlier one, which came after the next was begun
    RefItemPtr<DataSourceItem> const opened = std::exchange(m_opening, nullptr);
    if (opened == nullptr)
        return;
    std::ignore = dynamic_cast<TemplDataSourceItem &>(*opened).TakeOpened(); // a failure is its own
    viewport()->update();
    ItemList selected;
    GetSelectedItems(selected);
    if (std::find(selected.begin(), selected.end(), opened) != selected.end())
        Tell(WM_DS_DATA_SOURCE_SELECTED);
}

void DataSourceList::Tell(platform::MessageId message) {
    if (!m_coordinator.isNull())
        platform::PostMessage(m_coordinator, message);
}

void DataSourceList::OnSelected(unsigned newState) {
    if ((newState & LVIS_SELECTED) == 0 || m_keepsSelection)
        return;
    if ((m_connections != nullptr || m_favorites != nullptr) && SelectedRows().empty())
        return; // it only makes a connection, or opens something by a click
    PrepareSelectedItems();
    Tell(WM_DS_DATA_SOURCE_SELECTED);
}

bool DataSourceList::OnItemChanged(int, unsigned, unsigned newState) {
    OnSelected(newState);
    return true;
}

bool DataSourceList::OnRangeChanged(int, int, unsigned, unsigned newState) {
    OnSelected(newState);
    return true;
}

bool DataSourceList::OnClick(ReportHit hit, Point) {
    return hit.row >= 0 && GetItemState(hit.row, LVIS_SELECTED) != 0 && ActivateRow();
}

bool DataSourceList::OnDblClick(ReportHit hit, Point) {
    if (hit.row >= 0 && !HoldsItems(ItemAt(hit.row).get()))
        return true; // its first click is enough
    Tell(WM_DS_DATA_SOURCE_DBLCLICK);
    return true;
}

// ------------------------------------------------------------------------------------------------------ painting

int DataSourceList::LabelLeft(int, int) const { return kPictureBand; }

QString DataSourceList::ShownText(int row, int) const {
    RefItemPtr<DataSourceItem> const item = ItemAt(row);
    return item == nullptr ? QString() : platform::ToShownName(TextOf(*item));
}

void DataSourceList::DrawItem(DrawItemStruct const &request) {
    if (request.action != ODA_DRAWENTIRE) {
        ReportView::DrawItem(request);
        return;
    }
    RefItemPtr<DataSourceItem> const item = ItemAt(request.itemID);
    if (item == nullptr)
        return;
    (m_connections != nullptr ? DrawItemOrKindPicture : DrawItemPicture)(request.painter, PictureRect(request.rcItem),
                                                                         *item);
    Rect rect = Mirrored(request.rcItem);
    rect.left += kPictureBand;
    rect = Mirrored(rect);
    ItemColors const colors = ItemColorsOf((request.state & LVIS_SELECTED) != 0, hasFocus());
    request.painter.fillRect(platform::ToQRect(rect), colors.background);
    bool const isGrey = IsDead(*item) && (request.state & LVIS_SELECTED) == 0;
    request.painter.setPen(isGrey ? palette().color(QPalette::Disabled, QPalette::Text) : colors.text);
    DrawCellText(request.painter, rect, platform::ToDString(ShownText(request.itemID, 0)), LVCFMT_LEFT,
                 CellPlace::Centered, platform::Reading::LeftToRight);
    if ((request.state & LVIS_FOCUSED) != 0)
        DrawFocusRect(request.painter, rect, platform::ToColorRef(colors.text));
}

void DataSourceList::resizeEvent(QResizeEvent *event) {
    ReportView::resizeEvent(event);
    SetColumnWidth(0, GetClientRect().Width());
}

} // namespace zelvar
