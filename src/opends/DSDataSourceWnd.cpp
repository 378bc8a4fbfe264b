#include "zelvar/opends/DSDataSourceWnd.h"

#include "zelvar/model/ListingsShared.h"
#include "zelvar/opends/AccessRefusal.h"
#include "zelvar/opends/DSListCtrl.h"
#include "zelvar/opends/DSMessages.h"
#include "zelvar/opends/DataSourceList.h"
#include "zelvar/platform/ui/ControlId.h"

#include <QtGui/QResizeEvent>

namespace zelvar {

namespace {

constexpr int kDataSourceListId = 1;
constexpr unsigned kFolderListId = 2;

} // namespace

DSDataSourceWnd::DSDataSourceWnd(QWidget *parent)
    : QWidget(parent), m_dataSourceList(new DataSourceList(this)), m_folderList(new DSListCtrl(this)),
      m_selChangeMessage(WM_DS_DATA_ITEM_SELECTED), m_dblClckMessage(WM_DS_DATA_ITEM_DBLCLICK) {
    m_messages.On(WM_DS_DATA_SOURCE_SELECTED, this, &DSDataSourceWnd::OnDataSourceSelected);
    m_messages.On(WM_DS_DATA_SOURCE_DBLCLICK, this, &DSDataSourceWnd::OnDataSourceDblClick);
    m_messages.On(WM_DS_DATA_ITEM_SELECTED, this, &DSDataSourceWnd::OnDataItemSelected);
    m_messages.On(WM_DS_DATA_ITEM_DBLCLICK, this, &DSDataSourceWnd::OnDataItemDblClick);

    platform::SetDlgCtrlID(*m_dataSourceList, kDataSourceListId);
    m_dataSourceList->SetCoordinator(this);

    m_folderList->SetMode(DSListCtrl::ModeFolders);
    m_folderList->Create(0, {}, DT_DATA, this, kFolderListId);
    m_folderList->SetSelChangeMessage(WM_DS_DATA_ITEM_SELECTED);
    m_folderList->SetDblClckMessage(WM_DS_DATA_ITEM_DBLCLICK);
    m_folderList->SetCoordinator(this);
    m_folderList->SetShowParentFolderItem(false);
    m_folderList->hide();
    m_dataSourceList->raise();
}

DSDataSourceWnd::~DSDataSourceWnd() = default;

bool DSDataSourceWnd::event(QEvent *event) { return m_messages.Dispatch(*event) || QWidget::event(event); }

void DSDataSourceWnd::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    m_dataSourceList->setGeometry(rect());
    m_folderList->setGeometry(rect());
}

bool DSDataSourceWnd::IsFolderView() const { return !m_folderList->isHidden(); }
bool DSDataSourceWnd::IsDataSourceView() const { return !m_dataSourceList->isHidden(); }

void DSDataSourceWnd::SwitchToFolderView() {
    if (IsFolderView())
        return;
    ItemList items;
    m_dataSourceList->GetSelectedItems(items);
    m_folderList->ResetItems(items);
    bool const hadFocus = m_dataSourceList->hasFocus();
    m_dataSourceList->hide();
    m_folderList->show();
    if (hadFocus)
        m_folderList->setFocus();
}

void DSDataSourceWnd::SwitchToDataSourceView() {
    if (IsDataSourceView())
        return;
    bool const hadFocus = m_folderList->hasFocus();
    m_dataSourceList->show();
    m_folderList->hide();
    if (hadFocus)
        m_dataSourceList->setFocus();
}

void DSDataSourceWnd::GetRootItems(ItemList &items) const { m_folderList->GetRootItems(items); }

void DSDataSourceWnd::Forward(platform::MessageId message) {
    if (!m_coordinator.isNull() && message != 0)
        platform::SendMessage(m_coordinator, message);
}

void DSDataSourceWnd::OnDataSourceSelected() { Forward(WM_DS_DATA_SOURCE_SELECTED); }

void DSDataSourceWnd::OnDataSourceDblClick() {
    ListingsShared const shared;
    SwitchToFolderView();
    Forward(m_rootChangeMessage);
}

void DSDataSourceWnd::OnDataItemSelected() { Forward(m_selChangeMessage); }

void DSDataSourceWnd::OnDataItemDblClick() {
    if (!IsFolderView() || m_folderList->WasDblClckBesideRows())
        return;
    ListingsShared const shared;
    ItemList items;
    m_folderList->GetSelectedItems(items);
    if (items.empty())
        return;
    DataSourceItem &entered = *items.front();
    if (!entered.CheckItemAccess()) {
        TellNoAccess(entered.GetPath());
        return;
    }
    if (entered.GetDataSourceType() == DataSourceItem::DST_NONE) {
        SwitchToDataSourceView();
    } else {
        entered.BuildParents();
        m_folderList->ResetItems(items);
    }
    Forward(m_rootChangeMessage);
}

} // namespace zelvar
