// What the panes tell the open data source dialog and what the user does in it; how it is built and ends stands in
// DlgOpenDS.cpp.
#include "zelvar/base/Report.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/model/ListingsShared.h"
#include "zelvar/model/TemplDataSourceItem.h"
#include "zelvar/opends/AccessRefusal.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/DlgOpenDS.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/OpenFavorites.h"
#include "zelvar/opends/OpenFields.h"
#include "zelvar/opends/OpenForecast.h"
#include "zelvar/opends/OpenKeys.h"
#include "zelvar/opends/OpenPanes.h"
#include "zelvar/opends/OpenParts.h"
#include "zelvar/opends/OpenSearch.h"
#include "zelvar/opends/PlaceFinder.h"
#include "zelvar/opends/PlaceTravel.h"
#include "zelvar/opends/SelectionOptions.h"
#include "zelvar/opends/ServerWaits.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EllipsisLabel.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QPushButton>

#include <utility>

namespace zelvar {

using platform::MessageParam;
using platform::ToQString;

namespace {

/// One folder whose access is refused is told to the user.
bool CanShow(std::list<RefItemPtr<DataSourceItem>> const &items) {
    if (items.size() != 1 || items.front()->CheckItemAccess())
        return true;
    TellNoAccess(items.front()->GetPath());
    return false;
}

} // namespace

platform::MessageId const DlgOpenDS::kFirstPaintMessage = platform::RegisterMessage();
platform::MessageId const DlgOpenDS::kAcceptMessage = platform::RegisterMessage();

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
    m_messages.On(kAcceptMessage, this, &DlgOpenDS::OnOK);
}

bool DlgOpenDS::event(QEvent *event) {
    bool const isForPanes = m_keys != nullptr; // what comes behind their end is for nobody
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
    m_parts->Update();
    bool const isSelected = m_panes->Items()->GetNumSlct() > 0;
    m_okButton->setEnabled(isSelected || m_parts->HasGathered());
    // A list that is filled anew forgets what was selected without a word.
    OpenForecast *const forecast = Forecast();
    if (isSelected || forecast == nullptr)
        return;
    forecast->Select({});
    ItemList roots;
    m_panes->Items()->GetRootItems(roots);
    auto const *const tree =
        roots.size() == 1 ? dynamic_cast<TemplDataSourceItem const *>(roots.front().get()) : nullptr;
    forecast->SayUnlisted(tree == nullptr ? DString() : tree->GetName(),
                          tree == nullptr ? DError() : tree->GetFailure());
}

// ------------------------------------------------------------------------------------------------- path buttons

void DlgOpenDS::ResetPathButtons() { platform::PostMessage(this, WM_DS_RESET_PATH_BUTTONS); }

void DlgOpenDS::OnResetPathButtons() {
    if (m_pathButtons == nullptr)
        return;
    ItemList roots;
    if (m_panes->SourceWnd()->IsDataSourceView())
        m_panes->Hierarchy()->GetRootItems(roots);
    else
        m_panes->SourceWnd()->GetRootItems(roots);
    QRect place = platform::GetDlgItem(*this, kPathPlaceId)->geometry();
    if (Travel() != nullptr)
        place = Travel()->Arrange(place);
    m_pathButtons->Show(roots.empty() ? nullptr : roots.front(), place, [this](int id) { OnButtonClck(id); });
}

void DlgOpenDS::OnButtonClck(int id) {
    if (RefItemPtr<DataSourceItem> const item = m_pathButtons->ItemOf(id); item != nullptr)
        ShowItem(item);
}

void DlgOpenDS::OnAddToFavorites() {
    if (m_panes->Items()->IsShowingResults() && m_parts->Favorites() != nullptr)
        return m_parts->Favorites()->AddSearch();
    if (RefItemPtr<DataSourceItem> const item = m_pathButtons->LastShown(); item != nullptr)
        m_panes->Sources()->AddFavorite(item);
}

void DlgOpenDS::OnHome() {
    m_panes->SourceWnd()->SwitchToDataSourceView();
    if (m_features != kOpenPlain && platform::GetDlgItem(*this, kHomeId)->hasFocus())
        m_panes->Sources()->setFocus(Qt::TabFocusReason);
    ResetPathButtons();
}

// -------------------------------------------------------------------------------------------------- what is shown

bool DlgOpenDS::ShowInitialPlace(std::optional<std::chrono::milliseconds> time) {
    platform::EscapeWatch watch; // also for what it takes to find the place
    RequestScope const scope(
        RequestKind::List, [&watch] { return watch.IsPressed(); }, time);
    if (m_initItem != nullptr)
        ShowItem(m_initItem);
    else
        GoToDir(m_initDir, false);
    return !scope.IsUnanswered();
}

void DlgOpenDS::paintEvent(QPaintEvent *event) {
    cdxCDynamicDialog::paintEvent(event);
    // Behind the paint, not inside it.
    if (!std::exchange(m_isPlaceShown, true))
        platform::PostMessage(this, kFirstPaintMessage);
}

// What came in time is listed anew only where something was missing.
void DlgOpenDS::OnFirstPaint() {
    std::ignore = ShowInitialPlace(std::nullopt); // it ends when the user says so
}

void DlgOpenDS::ShowItem(RefItemPtr<DataSourceItem> item) {
    if (m_waits->Show(item))
        return;
    m_waits->Forget();
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    ItemList const items{std::move(item)};
    m_panes->SourceWnd()->SwitchToFolderView();
    m_panes->Folders()->ResetItems(items);
    m_panes->Items()->ResetItems(items);
    m_panes->Hierarchy()->ShowDir(nullptr);
    if (Travel() != nullptr)
        Travel()->Entered();
    ResetPathButtons();
}

void DlgOpenDS::GoToDir(DString const &path, bool report) {
    if (path.empty() || m_waits->GoTo(path, report))
        return;
    if (RefItemPtr<DataSourceItem> const item = m_places->Find(path, report); item != nullptr)
        m_places->Show(item);
}

void DlgOpenDS::SetRecursive(bool recursive) {
    m_recursiveButton->setChecked(recursive);
    OnListRecursively();
}

void DlgOpenDS::OnListRecursively() {
    m_panes->Items()->SetMode(m_recursiveButton->isChecked() ? DSListCtrl::ModeRecursive : DSListCtrl::ModeFiles);
    m_panes->Items()->Refresh();
}

void DlgOpenDS::ApplyFileFilter(char const *mask, char const *formatId) {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    m_panes->Folders()->ApplyFileFilter(mask, formatId);
    m_panes->Folders()->Refresh();
    m_panes->Hierarchy()->ApplyFileFilter(mask, formatId);
    m_panes->Hierarchy()->Refresh();
    m_panes->Items()->ApplyFileFilter(mask, formatId);
    if (Search() == nullptr || !Search()->Again())
        m_panes->Items()->Refresh();
}

void DlgOpenDS::UpdateFormat(DFileFrmt *format) {
    m_format = format;
    if (m_format == nullptr)
        return;
    ApplyFileFilter(m_format->GetExtn().c_str(), m_format->GetID().c_str());
    m_fields->SetMask(m_format->GetExtn());
}

// ------------------------------------------------------------------------------------------- what the panes tell

void DlgOpenDS::OnDataSourceSelected() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    m_waits->Forget();
    if (m_features != kOpenPlain)
        m_parts->ForgetSelection();
    ItemList items;
    m_panes->Sources()->GetSelectedItems(items);
    m_panes->Hierarchy()->ResetDataSources(items);
    m_panes->Items()->ResetItems(items);
    if (!items.empty())
        m_dataSourceType = items.front()->GetDataSourceType();
}

void DlgOpenDS::OnDataItemSelected(MessageParam pane) {
    platform::EscapeWatch const watch; // one Escape for all lists
    ItemList items;
    m_panes->Hierarchy()->GetSelectedItems(static_cast<unsigned>(pane), items);
    if (!CanShow(items))
        return;
    m_waits->Forget();
    m_panes->Items()->ResetItems(items);
    m_panes->Properties()->Clear();
}

void DlgOpenDS::OnFirstPaneDataItemSelected() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ListingsShared const shared;
    ItemList items;
    m_panes->Folders()->GetSelectedItems(items);
    if (!CanShow(items))
        return;
    m_waits->Forget();
    m_panes->Hierarchy()->ResetDataSources(items);
    m_panes->Items()->ResetItems(items);
    m_panes->Properties()->Clear();
}

DlgOpenDS::ItemList DlgOpenDS::SelectedImages() const {
    ItemList items;
    if (m_panes != nullptr)
        m_panes->Items()->GetSelectedItems(items);
    return items;
}

void DlgOpenDS::OnImageSelected() {
    ItemList const items = SelectedImages();
    m_options->Update(items);
    ShowSelected(items);
}

void DlgOpenDS::ShowSelected(ItemList const &items) {
    if (items.empty())
        return;
    platform::GetDlgItem<platform::EllipsisLabel>(*this, kStatusId)
        ->SetText(platform::ToShownName(items.back()->GetPath()));
    m_panes->Properties()->ShowProps(items.back(), m_format == nullptr ? "" : m_format->GetDriverText().c_str());
    OpenForecast *const forecast = Forecast();
    if (forecast == nullptr)
        return;
    ItemList picked = items;
    picked.remove_if([this](RefItemPtr<DataSourceItem> const &item) { return !item->IsFile(m_bdiFilter); });
    forecast->Select(m_panes->Items()->IsShowingResults() ? picked : items);
}

void DlgOpenDS::OnDSOptionsChanged() {
    if (!m_options->IsDriverPageShown())
        return OnImageSelected();
    m_options->Take();
    ShowSelected(SelectedImages());
    m_panes->Items()->viewport()->update(); // thumbnails are with their options
}

void DlgOpenDS::OnImageDblClick() {
    if (m_panes->Items()->WasDblClckBesideRows())
        return;
    // What the listing had to take for a plain file, and has turned out to be a container since, is entered.
    ItemList const items = SelectedImages();
    if (items.size() == 1 && m_places->EnterLateContainer(items.front()).value_or(true))
        return;
    // What OK opens is the basket's then.
    if (m_parts->HasGathered())
        m_parts->AddToBasket(items);
    else
        platform::PostMessage(this, kAcceptMessage);
}

void DlgOpenDS::OnRootChanged() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ItemList roots;
    m_panes->Hierarchy()->GetRootItems(roots);
    if (roots.empty()) {
        m_panes->SourceWnd()->SwitchToDataSourceView();
    } else {
        RefItemPtr<DataSourceItem> root = roots.back();
        RefItemPtr<DataSourceItem> parent = root->GetParent();
        if (parent != nullptr) {
            m_panes->SourceWnd()->SwitchToFolderView();
            m_panes->Folders()->ShowDir(parent, root);
        } else {
            m_panes->SourceWnd()->SwitchToDataSourceView();
        }
    }
    ResetPathButtons();
}

void DlgOpenDS::OnFirstPaneRootChanged() {
    platform::EscapeWatch const watch; // one Escape for all lists
    ItemList roots;
    m_panes->SourceWnd()->GetRootItems(roots);
    m_panes->Hierarchy()->ResetDataSources(roots);
    ResetPathButtons();
}

// ----------------------------------------------------------------------------------------------------------- keys

bool DlgOpenDS::eventFilter(QObject *watched, QEvent *event) {
    auto *const widget = qobject_cast<QWidget *>(watched);
    if (widget == nullptr || !isVisible() || m_keys == nullptr)
        return cdxCDynamicDialog::eventFilter(watched, event);
    if (Travel() != nullptr && (widget == this || isAncestorOf(widget)) && Travel()->TakeMouse(*event))
        return true;
    if (event->type() == QEvent::KeyPress && widget == focusWidget() &&
        m_keys->Take(*static_cast<QKeyEvent *>(event), *widget))
        return true;
    return cdxCDynamicDialog::eventFilter(watched, event);
}

} // namespace zelvar
