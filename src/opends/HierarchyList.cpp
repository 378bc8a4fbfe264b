#include "zelvar/opends/HierarchyList.h"

#include "zelvar/opends/AccessRefusal.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kSplitterId = 1000;
constexpr int kMaxPanes = 5;
constexpr int kMinWidth = 10; // pixels of a column
constexpr Size kNewPane{100, 100};

QWidget *NewList() { return new DSListCtrl; }
constexpr PaneClass kListClass{"DSListCtrl", &NewList};

} // namespace

HierarchyList::HierarchyList(QWidget *parent) : QWidget(parent), m_splitter(new DSplitterWnd(this)) {
    m_messages.On(WM_DS_DATA_ITEM_SELECTED, this, &HierarchyList::OnDataItemSelected);
    m_messages.On(WM_DS_DATA_ITEM_DBLCLICK, this, &HierarchyList::OnDataItemDblClick);
    setFocusPolicy(Qt::StrongFocus);

    m_splitter->SetPaneOwner(this);
    m_splitter->CreateStaticEx(this, 1, 1, 1, kMaxPanes, &kListClass, kSplitterId);
    m_splitter->CreateView(0, 0, &kListClass, kNewPane);
    m_splitter->SetColumnInfo(0, width(), kMinWidth);
}

HierarchyList::~HierarchyList() = default;

bool HierarchyList::event(QEvent *event) { return m_messages.Dispatch(*event) || QWidget::event(event); }

void HierarchyList::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    m_splitter->setGeometry(rect());
}

void HierarchyList::focusInEvent(QFocusEvent *event) {
    QWidget::focusInEvent(event);
    if (event->reason() == Qt::BacktabFocusReason) // from the first pane, which would have it back at once
        focusNextPrevChild(false);
    else if (DSListCtrl *const first = GetPane(0))
        first->setFocus(event->reason());
}

bool HierarchyList::eventFilter(QObject *watched, QEvent *event) {
    bool const isTab = event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Tab;
    return (isTab && FocusPaneBehind(watched)) || QWidget::eventFilter(watched, event);
}

bool HierarchyList::FocusPaneBehind(QObject const *pane) {
    for (int behind = 1; behind < GetPaneCount(); ++behind) {
        if (GetPane(behind - 1) != pane || !GetPane(behind - 1)->hasFocus())
            continue;
        GetPane(behind)->setFocus(Qt::TabFocusReason);
        return true;
    }
    return false;
}

bool HierarchyList::FocusPaneBefore(QObject const *pane) {
    for (int before = 0; before + 1 < GetPaneCount(); ++before) {
        if (GetPane(before + 1) != pane || !GetPane(before + 1)->hasFocus())
            continue;
        GetPane(before)->setFocus(Qt::BacktabFocusReason);
        return true;
    }
    return false;
}

void HierarchyList::SetFoldingRule(FoldingRule const &rule) {
    m_foldingRule = rule;
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        GetPane(pane)->SetFoldingRule(rule);
}

void HierarchyList::ShowKinds() {
    m_showsKinds = true;
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        GetPane(pane)->ShowKinds();
}

DSListCtrl *HierarchyList::GetPane(int pane) { return qobject_cast<DSListCtrl *>(m_splitter->GetPane(0, pane)); }
DSListCtrl const *HierarchyList::GetPane(int pane) const {
    return qobject_cast<DSListCtrl const *>(m_splitter->GetPane(0, pane));
}

void HierarchyList::InitializeLayout() {
    int const each = std::max(width() / std::max(GetPaneCount(), 1), kMinWidth);
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        m_splitter->SetColumnInfo(pane, each, kMinWidth);
    m_splitter->RecalcLayout();
}

void HierarchyList::ResetDataSources(ItemList const &items) {
    for (int pane = 0; pane < GetPaneCount(); ++pane) {
        if (pane == 0)
            GetPane(pane)->ResetItems(items);
        else
            GetPane(pane)->Reset();
    }
}

void HierarchyList::ShowDir(RefItemPtr<DataSourceItem> item) {
    std::vector<RefItemPtr<DataSourceItem>> chain;
    for (; item != nullptr && static_cast<int>(chain.size()) <= GetPaneCount(); item = item->GetParent())
        chain.push_back(item);
    std::reverse(chain.begin(), chain.end());

    int const levels = std::min(static_cast<int>(chain.size()) - 1, GetPaneCount());
    for (int pane = 0; pane < GetPaneCount(); ++pane) {
        auto const level = static_cast<std::size_t>(pane);
        if (pane < levels)
            GetPane(pane)->ShowDir(chain[level], chain[level + 1]);
        else
            GetPane(pane)->Reset();
    }
}

void HierarchyList::ApplyFileFilter(char const *mask, char const *formatId) {
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        GetPane(pane)->ApplyFileFilter(mask, formatId);
}

void HierarchyList::Refresh() {
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        GetPane(pane)->Refresh();
}

bool HierarchyList::IsListing() const {
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        if (GetPane(pane)->IsListing())
            return true;
    return false;
}

void HierarchyList::StopListing() {
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        GetPane(pane)->StopListing();
}

void HierarchyList::GetSelectedItems(unsigned pane, ItemList &items) const {
    if (pane < static_cast<unsigned>(GetPaneCount()))
        GetPane(static_cast<int>(pane))->GetSelectedItems(items);
}

bool HierarchyList::SortPane(int pane, int col, bool ascending) {
    DSListCtrl *const list = pane < GetPaneCount() ? GetPane(pane) : nullptr;
    if (list == nullptr)
        return false;
    list->Sort(col, ascending);
    return true;
}

bool HierarchyList::GetPaneSorting(int pane, int &col, bool &ascending) const {
    DSListCtrl const *const list = pane < GetPaneCount() ? GetPane(pane) : nullptr;
    if (list == nullptr)
        return false;
    col = list->GetLastSort().GetCol();
    ascending = list->GetLastSort().IsSortedAscnd();
    return true;
}

void HierarchyList::GetRootItems(ItemList &items) const { GetPane(0)->GetRootItems(items); }

bool HierarchyList::AddNewList(unsigned) { return true; }

QWidget *HierarchyList::CreateViewObj(DSplitterWnd *, int, int, PaneClass const *, Size) {
    auto *list = new DSListCtrl;
    list->SetCoordinator(this);
    list->SetFoldingRule(m_foldingRule);
    if (m_showsKinds)
        list->ShowKinds();
    list->installEventFilter(this);
    return list;
}

int HierarchyList::CreateViewWnd(DSplitterWnd *, QWidget *pane, int, int, Rect const &rect, QWidget *parent,
                                 unsigned id) {
    auto *list = qobject_cast<DSListCtrl *>(pane);
    if (list == nullptr || list->Create(0, rect, DT_DATA, parent, id) == 0)
        return 0;
    list->show(); // a child that comes to a visible window is hidden
    return 1;
}

void HierarchyList::DeleteView(DSplitterWnd *splitter, int row, int col) { delete splitter->GetPane(row, col); }

bool HierarchyList::RecalcLayout(DSplitterWnd *) { return false; }

int HierarchyList::PaneOfId(platform::MessageParam windowId) const {
    for (int pane = 0; pane < GetPaneCount(); ++pane)
        if (platform::GetDlgCtrlID(*GetPane(pane)) == windowId)
            return pane;
    return -1;
}

HierarchyList::ItemList HierarchyList::Selection(int pane) const {
    ItemList items;
    GetSelectedItems(static_cast<unsigned>(pane), items);
    return items;
}

void HierarchyList::OnDataItemSelected(platform::MessageParam windowId) {
    int const pane = PaneOfId(windowId);
    if (pane < 0 || m_coordinator.isNull())
        return;
    platform::SendMessage(m_coordinator, WM_DS_DATA_ITEM_SELECTED, pane, 0);
    if (pane + 1 >= GetPaneCount())
        return;
    GetPane(pane + 1)->ResetItems(Selection(pane));
    for (int behind = pane + 2; behind < GetPaneCount(); ++behind)
        GetPane(behind)->Reset();
}

void HierarchyList::OnDataItemDblClick(platform::MessageParam windowId) {
    int const pane = PaneOfId(windowId);
    if (pane < 0 || m_coordinator.isNull())
        return;
    platform::SendMessage(m_coordinator, WM_DS_DATA_ITEM_DBLCLICK, pane, 0);
    ItemList const items = Selection(pane);
    if (items.empty() || GetPane(pane)->WasDblClckBesideRows())
        return;
    if (!items.front()->CheckItemAccess()) {
        TellNoAccess(items.front()->GetPath());
        return;
    }
    ResetDataSources(items);
    if (m_rootChangeMessage != 0)
        platform::SendMessage(m_coordinator, m_rootChangeMessage);
}

} // namespace zelvar
