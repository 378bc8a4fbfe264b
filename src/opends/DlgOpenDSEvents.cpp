// What the panes tell the open data source dialog and what the user does in it; how it is built and ends stands in
// DlgOpenDS.cpp.
#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/controls/CZelComboBox.h"
#include "zelvar/controls/GUITools.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/layout/SplitterBar.h"
#include "zelvar/model/ListingsShared.h"
#include "zelvar/model/NtwDataSourceItem.h"
#include "zelvar/model/OpenOutcome.h"
#include "zelvar/model/PlaceResolver.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/BasketStrip.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/DriverOptionChoice.h"
#include "zelvar/opends/ExtrasFinder.h"
#include "zelvar/opends/FavoriteRows.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/ImageExtraWnd.h"
#include "zelvar/opends/NamedData.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenLine.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceNotice.h"
#include "zelvar/opends/PlaceOpener.h"
#include "zelvar/opends/PlaceTravel.h"
#include "zelvar/opends/PreviewBar.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/opends/search/SearchForm.h"
#include "zelvar/opends/search/StoredSearch.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

namespace zelvar {

using platform::MessageParam;
using platform::ToDString;
using platform::ToQString;

namespace {

bool IsWithin(QWidget const *ancestor, QWidget const *widget) {
    return ancestor != nullptr && widget != nullptr && (ancestor == widget || ancestor->isAncestorOf(widget));
}

/// One folder whose access is refused is told to the user.
bool CanShow(std::list<RefItemPtr<DataSourceItem>> const &items) {
    if (items.size() != 1 || items.front()->CheckItemAccess())
        return true;
    Report::UserNotification("Cannot access %s", items.front()->GetPath().c_str());
    return false;
}

} // namespace

platform::MessageId const DlgOpenDS::kFirstPaintMessage = platform::RegisterMessage();
platform::MessageId const DlgOpenDS::kAcceptMessage = platform::RegisterMessage();
platform::MessageId const DlgOpenDS::kExtrasFoundMessage = platform::RegisterMessage();

void DlgOpenDS::WireMessages() {
    m_messages.On(WM_DS_DATA_SOURCE_SELECTED, this, &DlgOpenDS::OnDataSourceSelected);
    m_messages.On(WM_DS_DATA_ITEM_SELECTED, this, &DlgOpenDS::OnDataItemSelected);
    m_messages.On(WM_DS_FIRST_PANE_DATA_ITEM_SELECTED, this, &DlgOpenDS::OnFirstPaneDataItemSelected);
    m_messages.On(WM_DS_IMAGE_SELECTED, this, &DlgOpenDS::OnImageSelected);
    m_messages.On(WM_DS_IMAGE_DBLCLICK, this, &DlgOpenDS::OnImageDblClick);
    m_messages.On(WM_DS_OPTIONS_CHANGED, this, &DlgOpenDS::OnDSOptionsChanged);
    m_messages.On(WM_DS_ROOT_ITEM_CHANGED, this, &DlgOpenDS::OnRootChanged);
    m_messages.On(WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED, this, &DlgOpenDS::OnFirstPaneRootChanged);
    m_messages.On(WM_DS_RESET_PATH_BUTTONS, this, &DlgOpenDS::OnResetPathButtons);
    m_messages.On(kFirstPaintMessage, this, &DlgOpenDS::OnFirstPaint);
    m_messages.On(kAcceptMessage, this, &DlgOpenDS::OnAccept);
    m_messages.On(kExtrasFoundMessage, this, &DlgOpenDS::OnExtrasFound);
}

bool DlgOpenDS::event(QEvent *event) {
    bool const isForPanes = m_splitter != nullptr; // what comes behind their end is for nobody
    return (isForPanes && m_messages.Dispatch(*event)) || cdxCDynamicDialog::event(event);
}

void DlgOpenDS::resizeEvent(QResizeEvent *event) {
    cdxCDynamicDialog::resizeEvent(event);
    if (m_layoutDone)
        ResetPathButtons();
}

void DlgOpenDS::timerEvent(QTimerEvent *event) {
    if (event->timerId() == m_stateTimer)
        OnUpdateState();
    else
        cdxCDynamicDialog::timerEvent(event);
}

void DlgOpenDS::OnUpdateState() {
    m_waits->Update();
    if (m_travel != nullptr)
        m_travel->Update();
    if (m_search != nullptr)
        m_search->Update();
    bool const isSelected = m_mainList->GetNumSlct() > 0;
    m_okButton->setEnabled(isSelected || (m_basket != nullptr && !m_basket->Content().IsEmpty()));
    // A list that is filled anew forgets what was selected without a word.
    if (isSelected || m_forecast == nullptr)
        return;
    m_forecast->Select({});
    ItemList roots;
    m_mainList->GetRootItems(roots);
    auto const *const tree =
        roots.size() == 1 ? dynamic_cast<TemplDataSourceItem const *>(roots.front().get()) : nullptr;
    m_forecast->SayUnlisted(tree == nullptr ? DError() : tree->GetFailure());
}

// ------------------------------------------------------------------------------------------------- path buttons

void DlgOpenDS::ResetPathButtons() { platform::PostMessage(this, WM_DS_RESET_PATH_BUTTONS); }

void DlgOpenDS::OnResetPathButtons() {
    if (m_pathButtons == nullptr)
        return;
    ItemList roots;
    if (m_dataSourceWnd->IsDataSourceView())
        m_hierarchyList->GetRootItems(roots);
    else
        m_dataSourceWnd->GetRootItems(roots);
    QRect place = platform::GetDlgItem(*this, kPathPlaceId)->geometry();
    if (m_travel != nullptr)
        place = m_travel->Arrange(place);
    m_pathButtons->Show(roots.empty() ? nullptr : roots.front(), place, [this](int id) { OnButtonClck(id); });
}

void DlgOpenDS::OnButtonClck(int id) {
    if (RefItemPtr<DataSourceItem> const item = m_pathButtons->ItemOf(id); item != nullptr)
        ShowItem(item);
}

void DlgOpenDS::OnAddToFavorites() {
    if (m_mainList->IsShowingResults() && m_dataSourceList->OfferedFavorites() != nullptr)
        return AddSearchToFavorites();
    if (RefItemPtr<DataSourceItem> const item = m_pathButtons->LastShown(); item != nullptr)
        m_dataSourceList->AddFavorite(item);
}

void DlgOpenDS::OnHome() {
    m_dataSourceWnd->SwitchToDataSourceView();
    if (m_features != kOpenPlain && m_homeButton->hasFocus())
        m_dataSourceList->setFocus(Qt::TabFocusReason);
    ResetPathButtons();
}

// -------------------------------------------------------------------------------------------------- what is shown

void DlgOpenDS::ShowItem(RefItemPtr<DataSourceItem> item) {
    if (m_waits->Show(item))
        return;
    m_waits->Forget();
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    ItemList const items{std::move(item)};
    m_dataSourceWnd->SwitchToFolderView();
    m_folderList->ResetItems(items);
    m_mainList->ResetItems(items);
    m_hierarchyList->ShowDir(nullptr);
    if (m_travel != nullptr)
        m_travel->Entered();
    ResetPathButtons();
}

void DlgOpenDS::GoToDir(DString const &path, bool report) {
    if (path.empty() || m_waits->GoTo(path, report))
        return;
    if (RefItemPtr<DataSourceItem> const item = FindPlace(path, report); item != nullptr)
        ShowPlace(item);
}

RefItemPtr<DataSourceItem> DlgOpenDS::FindPlace(DString const &path, bool report) const {
    RefItemPtr<DataSourceItem> item;
    DError error;
    {
        // Whoever names a place waits for its answer, or ends the wait.
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        RequestScope const scope(RequestKind::List, [&watch] { return watch.IsPressed(); });
        item = ItemFromPlace(path, &error);
        if (watch.IsPressed())
            return nullptr;
    }
    if (item == nullptr && report)
        RefusePlace(path, error);
    return item;
}

void DlgOpenDS::AddToFavorites(ItemList const &items) {
    if (!AreExtrasFound())
        return;
    TakeDriverOptions();
    for (RefItemPtr<DataSourceItem> const &item : items) {
        bool const isPlace = item->IsFolder();
        m_dataSourceList->OfferedFavorites()->Add({.kind = isPlace ? Favorite::Kind::Place : Favorite::Kind::Data,
                                                   .target = isPlace ? item->GetPath() : MonikerOf(*item)});
    }
}

void DlgOpenDS::AddSearchToFavorites() {
    if (std::optional<StoredSearch> const search = m_search->Searched(); search)
        m_dataSourceList->OfferedFavorites()->Add(
            {.kind = Favorite::Kind::Search, .target = search->ToText(), .name = search->InWords()});
}

void DlgOpenDS::OpenFavorite(Favorite const &favorite) {
    switch (favorite.kind) {
    case Favorite::Kind::Data: {
        DError error;
        bool const isOfServer = PlaceOpener::IsFor(favorite.target); // nothing waits for one
        if (isOfServer || m_namedData == nullptr)
            GoToDir(favorite.target, true);
        else if (!m_namedData->Show({favorite.target}, &error))
            RefusePlace(favorite.target, error);
        break;
    }
    case Favorite::Kind::Basket:
        LoadIntoBasket(favorite.target);
        break;
    case Favorite::Kind::Search:
        if (std::optional<StoredSearch> const search = StoredSearch::FromText(favorite.target);
            search && m_search != nullptr) {
            if (RefItemPtr<DataSourceItem> const place = FindPlace(search->place, true); place != nullptr) {
                ShowPlace(place);
                m_search->Begin(search->draft);
            }
        }
        break;
    case Favorite::Kind::Place:
        break; // its selection has listed it
    }
}

void DlgOpenDS::LoadIntoBasket(DString const &file) {
    if (m_basket == nullptr)
        Report::UserNotification(Translated("Here one item is picked: a basket is of no use"));
    else if (!m_basket->Load(file))
        Report::UserNotification(Translated("'%s' is no list of monikers"), file.c_str());
}

void DlgOpenDS::RefusePlace(DString const &path, DError const &error) const {
    if (error.IsSet() && m_forecast != nullptr)
        Report::UserNotification("Cannot access '%s' path: %s", path.c_str(), CauseInWords(error).c_str());
    else
        Report::UserNotification("Cannot access '%s' path", path.c_str());
}

void DlgOpenDS::ShowPlace(RefItemPtr<DataSourceItem> item) {
    // What holds nothing stands for what it lies in.
    item->BuildParents();
    RefItemPtr<DataSourceItem> const parent = item->GetParent();
    ShowItem(item->IsFolder() || parent == nullptr ? item : parent);
}

void DlgOpenDS::SetRecursive(bool recursive) {
    m_recursiveButton->setChecked(recursive);
    OnListRecursively();
}

void DlgOpenDS::OnListRecursively() {
    m_mainList->SetMode(m_recursiveButton->isChecked() ? DSListCtrl::ModeRecursive : DSListCtrl::ModeFiles);
    m_mainList->Refresh();
}

void DlgOpenDS::ApplyFileFilter(char const *mask, char const *formatId) {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    m_folderList->ApplyFileFilter(mask, formatId);
    m_folderList->Refresh();
    m_hierarchyList->ApplyFileFilter(mask, formatId);
    m_hierarchyList->Refresh();
    m_mainList->ApplyFileFilter(mask, formatId);
    if (m_search == nullptr || !m_search->Again())
        m_mainList->Refresh();
}

void DlgOpenDS::UpdateFormat(DFileFrmt *format) {
    m_format = format;
    if (m_format == nullptr)
        return;
    ApplyFileFilter(m_format->GetExtn().c_str(), m_format->GetID().c_str());
    m_fileFilterEdit->setText(ToQString(m_format->GetExtn()));
}

void DlgOpenDS::OnSelendokFileType() {
    if (m_fileTypeCombo->currentIndex() >= 0)
        UpdateFormat(m_formats[m_fileTypeCombo->GetItemData(m_fileTypeCombo->GetCurSel())]);
}

void DlgOpenDS::OnSelendokHist() { GoToDir(m_histCombo->GetWindowText(), true); }

// ------------------------------------------------------------------------------------------- what the panes tell

void DlgOpenDS::OnDataSourceSelected() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    m_waits->Forget();
    ItemList items;
    m_dataSourceList->GetSelectedItems(items);
    m_hierarchyList->ResetDataSources(items);
    m_mainList->ResetItems(items);
    if (!items.empty())
        m_dataSourceType = items.front()->GetDataSourceType();
}

void DlgOpenDS::OnDataItemSelected(MessageParam pane) {
    platform::EscapeWatch const watch; // one Escape for all lists
    ItemList items;
    if (m_hierarchyList != nullptr)
        m_hierarchyList->GetSelectedItems(static_cast<unsigned>(pane), items);
    else
        m_folderList->GetSelectedItems(items);
    if (!CanShow(items))
        return;
    m_waits->Forget();
    m_mainList->ResetItems(items);
    m_propertyWnd->Clear();
}

void DlgOpenDS::OnFirstPaneDataItemSelected() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    ItemList items;
    m_folderList->GetSelectedItems(items);
    if (!CanShow(items))
        return;
    m_waits->Forget();
    m_hierarchyList->ResetDataSources(items);
    m_mainList->ResetItems(items);
    m_propertyWnd->Clear();
}

DlgOpenDS::ItemList DlgOpenDS::SelectedImages() const {
    ItemList items;
    if (m_mainList != nullptr)
        m_mainList->GetSelectedItems(items);
    return items;
}

void DlgOpenDS::OnImageSelected() {
    ItemList const items = SelectedImages();
    UpdateExtras(items);
    ShowSelected(items);
}

void DlgOpenDS::ShowSelected(ItemList const &items) {
    if (items.empty())
        return;
    platform::GetDlgItem<platform::EllipsisLabel>(*this, kStatusId)->SetText(ToQString(items.back()->GetPath()));
    m_propertyWnd->ShowProps(items.back(), m_format == nullptr ? "" : m_format->GetDriverText().c_str());
    if (m_forecast == nullptr)
        return;
    ItemList picked = items;
    picked.remove_if([this](RefItemPtr<DataSourceItem> const &item) { return !item->IsFile(m_bdiFilter); });
    m_forecast->Select(m_mainList->IsShowingResults() ? picked : items);
}

// The options of the selection before stay where they are until it is known what takes their place.
void DlgOpenDS::UpdateExtras(ItemList const &items) {
    if (m_driverOptions != nullptr) { // without extras the first tells
        bool const isFirstEnough = m_extras.GetItems().empty() && !items.empty();
        bool const isChosen = m_forecast != nullptr && !items.empty();
        m_extrasFinder->Ask(m_extras, isFirstEnough ? ItemList{items.front()} : items, ExtrasFinder::Drivers::Ask,
                            isChosen ? m_forecast->Drivers().Of(items.front()->GetPath()) : DString());
    } else if (!m_extras.GetItems().empty())
        m_extrasFinder->Ask(m_extras, items);
    else
        m_propertyWnd->UpdateExtras(items.empty() ? nullptr : items.front(), nullptr);
}

void DlgOpenDS::OnExtrasFound() {
    std::optional<ExtrasFinder::Answer> const answer = m_extrasFinder->TakeAnswer();
    if (!answer || m_propertyWnd == nullptr)
        return;
    ItemList const items = SelectedImages();
    if (m_driverOptions != nullptr && answer->options == nullptr) {
        m_driverOptions->SetDriver(answer->driverId, answer->lists);
        ShowDriverOptions(items);
    } else {
        if (m_driverOptions != nullptr)
            m_driverOptions->SetDriver({}, nullptr);
        m_pageItems.clear();
        m_propertyWnd->UpdateExtras(items.empty() ? nullptr : items.front(), answer->options.get());
    }
    ShowSelected(items); // with the options that hold now
}

bool DlgOpenDS::AreExtrasFound() {
    constexpr std::chrono::milliseconds kLook{10};
    if (m_extrasFinder->IsBusy(kLook)) {
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        while (m_extrasFinder->IsBusy(kLook))
            if (watch.IsPressed())
                return false;
    }
    OnExtrasFound();
    return true;
}

void DlgOpenDS::ShowDriverOptions(ItemList const &items) {
    bool const hasPage = m_driverOptions->HasPage() && !items.empty() && !items.front()->GetPath().empty();
    m_pageItems = hasPage ? items : ItemList();
    if (!hasPage) {
        m_propertyWnd->ShowDriverOptions({}, {}, {});
        return;
    }
    DString const path = items.front()->GetPath();
    m_propertyWnd->ShowDriverOptions(m_driverOptions->DriverId(), m_driverOptions->Options(),
                                     m_driverOptions->ValuesFor(path, NamedOptionsOf(path)));
}

void DlgOpenDS::TakeDriverOptions() {
    if (m_pageItems.empty())
        return;
    m_propertyWnd->ApplyOptions();
    OptionValues const values = m_propertyWnd->Extra()->GetValues();
    auto const text = [this](OptionValues const &of) { return ToOptionText(m_driverOptions->Options(), of); };
    DString const path = m_pageItems.front()->GetPath();
    if (text(values) == text(m_driverOptions->ValuesFor(path, NamedOptionsOf(path))))
        return; // each keeps its own
    std::vector<DString> paths;
    for (RefItemPtr<DataSourceItem> const &item : m_pageItems) // the selection may be another one by now
        paths.push_back(item->GetPath());
    m_driverOptions->Change(paths, values);
}

void DlgOpenDS::OnDSOptionsChanged() {
    if (m_mainList == nullptr || m_propertyWnd == nullptr)
        return;
    if (m_pageItems.empty())
        return OnImageSelected();
    TakeDriverOptions();
    ShowSelected(SelectedImages());
}

void DlgOpenDS::OnImageDblClick() {
    if (m_mainList->WasDblClckBesideRows())
        return;
    // What the listing had to take for a plain file, and has turned out to be a container since, is entered.
    ItemList const items = SelectedImages();
    if (items.size() == 1 && EnterLateContainer(items.front()).value_or(true))
        return;
    // What OK opens is the basket's then.
    if (m_basket != nullptr && !m_basket->Content().IsEmpty())
        AddToBasket(items);
    else
        platform::PostMessage(this, kAcceptMessage);
}

std::optional<bool> DlgOpenDS::EnterLateContainer(RefItemPtr<DataSourceItem> const &item) {
    auto *const file = dynamic_cast<NtwDataSourceItem *>(item.get());
    if (file == nullptr)
        return false;
    if (file->MayTurnOutContainer()) {
        GUITools::WaitCursor const cursor;
        platform::EscapeWatch watch;
        RequestScope const scope(RequestKind::List, [&watch] { return watch.IsPressed(); });
        std::optional<bool> const isContainer = ClassifyAtLeisure(file->GetPath(), nullptr);
        if (watch.IsPressed())
            return std::nullopt;
        if (isContainer)
            file->SetClassified(*isContainer);
    }
    if (!file->IsFolder())
        return false;
    ShowItem(item);
    return true;
}

void DlgOpenDS::OnAccept() { OnOK(); }

void DlgOpenDS::OnRootChanged() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ItemList roots;
    m_hierarchyList->GetRootItems(roots);
    if (roots.empty()) {
        m_dataSourceWnd->SwitchToDataSourceView();
    } else {
        RefItemPtr<DataSourceItem> root = roots.back();
        RefItemPtr<DataSourceItem> parent = root->GetParent();
        if (parent != nullptr) {
            m_dataSourceWnd->SwitchToFolderView();
            m_folderList->ShowDir(parent, root);
        } else {
            m_dataSourceWnd->SwitchToDataSourceView();
        }
    }
    ResetPathButtons();
}

void DlgOpenDS::OnFirstPaneRootChanged() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ItemList roots;
    m_dataSourceWnd->GetRootItems(roots);
    m_hierarchyList->ResetDataSources(roots);
    ResetPathButtons();
}

// ----------------------------------------------------------------------------------------------------------- keys

bool DlgOpenDS::eventFilter(QObject *watched, QEvent *event) {
    if (m_travel != nullptr && isVisible()) {
        auto const *const under = qobject_cast<QWidget *>(watched);
        if (IsWithin(this, under) && m_travel->TakeMouse(*event))
            return true;
    }
    if (event->type() == QEvent::KeyPress && isVisible()) {
        auto *focus = qobject_cast<QWidget *>(watched);
        auto const &key = *static_cast<QKeyEvent *>(event);
        if (focus != nullptr && focus == focusWidget() && (ProcessShortcut(key) || ProcessKey(key.key(), focus)))
            return true;
    }
    return cdxCDynamicDialog::eventFilter(watched, event);
}

bool DlgOpenDS::ProcessShortcut(QKeyEvent const &key) {
    if (m_search == nullptr || !key.matches(QKeySequence::Find))
        return false;
    m_search->Open();
    return true;
}

bool DlgOpenDS::ProcessKey(int key, QWidget *focus) {
    if (qobject_cast<SplitterBar *>(focus) != nullptr)
        return false; // it has its own keys
    switch (key) {
    case Qt::Key_Down:
        return m_search != nullptr && m_search->GoToResults(*focus);
    case Qt::Key_F8:
        return m_splitter->MoveBarsByKeyboard();
    case Qt::Key_F5:
        ProcessRefreshKey(focus);
        return true;
    case Qt::Key_Escape:
        // Else it closes the dialog.
        return m_waits->Stop() || (m_search != nullptr && m_search->Stop());
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return ProcessReturnKey(focus);
    case Qt::Key_Tab:
        return ProcessTabKey(focus);
    case Qt::Key_Insert:
        return ProcessInsertKey(focus);
    default:
        return false;
    }
}

void DlgOpenDS::ProcessRefreshKey(QWidget *focus) {
    if (m_waits->Retry() || (m_search != nullptr && m_search->Again()))
        return;
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    if (IsWithin(m_dataSourceList, focus)) {
        m_dataSourceList->ResetSelectedItems();
    } else if (IsWithin(m_hierarchyList, focus)) {
        m_hierarchyList->Refresh();
        m_mainList->Refresh();
    } else if (IsWithin(m_folderList, focus)) {
        m_folderList->Refresh();
    } else if (IsWithin(m_mainList, focus)) {
        m_mainList->Refresh();
    }
}

bool DlgOpenDS::ProcessReturnKey(QWidget *focus) {
    if (IsWithin(m_histCombo, focus)) {
        DString const typed = FixPath(m_histCombo->GetWindowText().c_str());
        DString const path = TakeSecrets(typed);
        if (path != typed)
            m_histCombo->setEditText(ToQString(path));
        bool const isOfServer = PlaceOpener::IsFor(path); // nothing waits for one
        if (!path.empty() && (isOfServer || m_namedData == nullptr || !m_namedData->Show({path})))
            GoToDir(path, true);
        return true;
    }
    if (focus == m_fileFilterEdit) {
        ApplyFileFilter(ToDString(m_fileFilterEdit->text()).c_str(), nullptr);
        return true;
    }
    // The button that has the focus is the one that is pressed, not the dialog's own.
    if (auto *const button = qobject_cast<QPushButton *>(focus)) {
        button->click();
        return true;
    }
    if (m_search != nullptr && IsWithin(m_search->Form(), focus)) {
        m_search->Begin();
        return true;
    }
    if (qobject_cast<QAbstractButton *>(focus) != nullptr || IsWithin(m_propertyWnd->Bar(), focus))
        return false;
    if (IsWithin(m_dataSourceList, focus) && m_dataSourceList->ActivateRow())
        return true;
    if (!m_pageItems.empty() && IsWithin(m_propertyWnd->Extra(), focus)) {
        m_propertyWnd->ApplyOptions();
        OnDSOptionsChanged();
        return true;
    }
    OnOK();
    return true;
}

bool DlgOpenDS::ProcessInsertKey(QWidget *focus) {
    if (m_basket == nullptr || !IsWithin(m_mainList, focus))
        return false;
    AddToBasket(SelectedImages());
    return true;
}

bool DlgOpenDS::ProcessTabKey(QWidget *focus) {
    if (m_hierarchyList->FocusPaneBehind(focus))
        return true;
    struct Step {
        QWidget *from;
        QWidget *to;
    };
    // Over a list without rows its buttons stand in for it.
    PlaceNotice const *const notice = m_waits->Notice();
    QWidget *items = m_mainList;
    if (QPushButton *const next = notice == nullptr ? nullptr : notice->NextButton(focus)) {
        if (IsWithin(m_mainList, focus)) {
            next->setFocus(Qt::TabFocusReason);
            return true;
        }
        items = m_mainList->GetNumRow() == 0 ? next : items;
    }
    QWidget *const hierarchy = m_hierarchyList->GetPane(0);
    QWidget *const sources =
        m_dataSourceWnd->IsDataSourceView() ? static_cast<QWidget *>(m_dataSourceList) : m_folderList;
    auto *const line = platform::GetDlgItem<OpenLine>(*this, kLineId);
    bool const hasChoice = line != nullptr && line->Drivers()->isVisible();
    QWidget *const belowPanes = hasChoice ? static_cast<QWidget *>(line->Drivers()) : m_histCombo;
    Step const steps[] = {
        {m_dataSourceList, hierarchy},
        {m_folderList, hierarchy},
        {m_hierarchyList, items},
        {m_mainList, belowPanes},
        {line, m_histCombo},
        {m_histCombo, m_fileFilterEdit},
        {m_fileFilterEdit, m_fileTypeCombo},
        {m_fileTypeCombo, sources},
    };
    for (Step const &step : steps) {
        if (step.from == nullptr || !IsWithin(step.from, focus))
            continue;
        step.to->setFocus(Qt::TabFocusReason);
        return true;
    }
    return false;
}

} // namespace zelvar
