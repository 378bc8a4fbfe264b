#include "zelvar/opends/OpenPanes.h"

#include "zelvar/model/ListingsShared.h"
#include "zelvar/opends/DSDataSourceWnd.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DSPropertyWnd.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/opends/HierarchyList.h"
#include "zelvar/opends/OpenDialogTemplate.h"
#include "zelvar/opends/core/DialogState.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/store/DCnfg.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kInch = 96;     // pixels before scaling
constexpr int kMinTrack = 10; // pixels of a row or column

template <class Pane>
QWidget *NewPane() {
    return new Pane;
}
constexpr PaneClass kSplitterClass{"DSplitterWnd", &NewPane<DSplitterWnd>};
constexpr PaneClass kHierarchyClass{"HierarchyList", &NewPane<HierarchyList>};
constexpr PaneClass kListClass{"DSListCtrl", &NewPane<DSListCtrl>};
constexpr PaneClass kDataSourceClass{"DSDataSourceWnd", &NewPane<DSDataSourceWnd>};
constexpr PaneClass kPropertyClass{"DSPropertyWnd", &NewPane<DSPropertyWnd>};

} // namespace

void OpenPanes::Create(QRect const &place) {
    m_splitter = new DSplitterWnd(&m_setup.dialog);
    m_splitter->SetPaneOwner(&m_setup.owner);
    m_splitter->CreateStaticEx(&m_setup.dialog, 1, 3, 1, 3, nullptr, kSplitterId);
    m_splitter->setGeometry(place);
    PaneClass const *const classes[] = {&kSplitterClass, &kHierarchyClass, &kListClass};
    for (int column = 0; column < 3; ++column)
        m_splitter->CreateView(0, column, classes[column], {kInch, place.height()});
    m_leftSplitter = qobject_cast<DSplitterWnd *>(m_splitter->GetPane(0, 0));
    m_hierarchy = qobject_cast<HierarchyList *>(m_splitter->GetPane(0, 1));
    m_items = qobject_cast<DSListCtrl *>(m_splitter->GetPane(0, 2));
    m_sourceWnd = qobject_cast<DSDataSourceWnd *>(m_leftSplitter->GetPane(0, 0));
    m_properties = qobject_cast<DSPropertyWnd *>(m_leftSplitter->GetPane(1, 0));
    m_properties->SetClassifiedHandler([items = m_items] { items->viewport()->update(); });
    m_sources = m_sourceWnd->GetDataSourceList();
    m_folders = m_sourceWnd->GetFolderList();
    Name();
    m_splitter->show();
}

void OpenPanes::Name() const {
    m_items->setObjectName("mainList");
    m_folders->setObjectName("folderList");
    m_sources->setObjectName("dataSourceList");
    m_items->setAccessibleName(platform::Shown("Items"));
    m_folders->setAccessibleName(platform::Shown("Folders"));
    m_hierarchy->GetPane(0)->setAccessibleName(platform::Shown("Hierarchy"));
}

// Which pane talks to whom by which number is decided here and nowhere else.
int OpenPanes::CreateView(QWidget *pane, Rect const &rect, QWidget *parent, unsigned id) {
    QRect const place(rect.left, rect.top, rect.Width(), rect.Height());
    if (auto *hierarchy = qobject_cast<HierarchyList *>(pane)) {
        hierarchy->setParent(parent);
        hierarchy->setGeometry(place);
        hierarchy->SetCoordinator(&m_setup.dialog);
        hierarchy->SetRootChangeMessage(WM_DS_ROOT_ITEM_CHANGED);
        hierarchy->show();
        return 1;
    }
    if (auto *nested = qobject_cast<DSplitterWnd *>(pane)) {
        nested->SetPaneOwner(&m_setup.owner);
        nested->CreateStaticEx(parent, 2, 1, 2, 1, nullptr, id);
        nested->setGeometry(place);
        Size const half{rect.Width(), rect.Height() / 2};
        nested->CreateView(0, 0, &kDataSourceClass, half);
        nested->CreateView(1, 0, &kPropertyClass, half);
        nested->show();
        return 1;
    }
    if (auto *properties = qobject_cast<DSPropertyWnd *>(pane)) {
        properties->Create(rect, m_setup.dlgTemplate, parent, id);
        properties->SetOptChangedMsg(WM_DS_OPTIONS_CHANGED);
        properties->SetFltrChangedMsg(WM_DS_FILTER_CHANGED);
        properties->SetCoordinator(&m_setup.dialog);
        properties->show();
        return 1;
    }
    if (auto *sources = qobject_cast<DSDataSourceWnd *>(pane)) {
        sources->setParent(parent);
        sources->setGeometry(place);
        sources->SetCoordinator(&m_setup.dialog);
        sources->SetRootChangeMessage(WM_DS_FIRST_PANE_ROOT_ITEM_CHANGED);
        sources->show();
        return 1;
    }
    if (auto *list = qobject_cast<DSListCtrl *>(pane)) {
        list->SetMode(DSListCtrl::ModeRecursive);
        list->SetSelChangeMessage(WM_DS_IMAGE_SELECTED);
        list->SetDblClckMessage(WM_DS_IMAGE_DBLCLICK);
        list->Create(0, rect, m_setup.dlgTemplate, parent, id);
        list->SetCoordinator(&m_setup.dialog);
        if (!m_setup.picksSeveral)
            list->SetMultiSlct(false);
        return 1;
    }
    return 0;
}

void OpenPanes::InitializeLayout(bool showsTabs) {
    int const fifth = std::max(m_splitter->width() / 5, kMinTrack);
    int const tabs = showsTabs ? std::min(m_properties->WidthOfTabs(), m_splitter->width() / 3) : 0;
    m_splitter->SetColumnInfo(0, std::max(fifth, tabs), kMinTrack);
    m_splitter->SetColumnInfo(1, fifth, kMinTrack);
    m_splitter->RecalcLayout();
    m_leftSplitter->SetRowInfo(0, std::max(m_leftSplitter->height() / 2, kMinTrack), kMinTrack);
    m_leftSplitter->RecalcLayout();
    m_hierarchy->InitializeLayout();
}

void OpenPanes::ChangeHeight(std::function<void()> const &change) {
    int const before = m_leftSplitter->height();
    int shown = 0;
    int ideal = 0;
    int least = 0;
    m_leftSplitter->GetRowInfo(0, shown, ideal, least);
    change();
    int const after = m_leftSplitter->height();
    if (before <= 0 || after == before)
        return;
    m_leftSplitter->SetRowInfo(0, (shown * after + before / 2) / before, least);
    m_leftSplitter->RecalcLayout();
}

void OpenPanes::RestoreSorting() const {
    // What is kept is not what is read here, which holds no sorting: the order starts afresh every time. Users know it
    // so.
    DialogSorting const sorting =
        SortingFromText(DUserCnfg("DlgOpenDS").ReadString("recursive", "")).value_or(DialogSorting{});
    m_hierarchy->SortPane(0, 0, sorting.hierarchyAscending);
    m_items->Sort(sorting.column, sorting.mainAscending);
    m_folders->Sort(0, sorting.foldersAscending);
}

void OpenPanes::KeepSorting(DString const &key) const {
    DialogSorting sorting;
    int column = 0;
    m_hierarchy->GetPaneSorting(0, column, sorting.hierarchyAscending);
    sorting.foldersAscending = m_folders->GetLastSort().IsSortedAscnd();
    sorting.column = std::clamp(m_items->GetListingSort().GetCol(), 0, 2);
    sorting.mainAscending = m_items->GetListingSort().IsSortedAscnd();
    DUserCnfg("DlgOpenDSSorting").WriteString(key, SortingToText(sorting));
}

void OpenPanes::ListAgain() const {
    platform::EscapeWatch const watch; // one Escape for both lists
    ListingsShared const shared;
    for (DSListCtrl *const list : {m_folders, m_items}) {
        DSListCtrl::ItemList roots;
        list->GetRootItems(roots);
        list->ResetItems(roots);
    }
}

} // namespace zelvar
