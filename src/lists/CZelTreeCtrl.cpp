#include "zelvar/lists/CZelTreeCtrl.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/lists/CTreeCtrlItr.h"
#include "zelvar/platform/ui/Pictures.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>

#include <utility>

namespace zelvar {

CZelTreeCtrl::CZelTreeCtrl(QWidget *parent) : TreeView(parent) {
    viewport()->setMouseTracking(true); // a drag hears of moves after its button was let go elsewhere
}

CZelTreeCtrl::~CZelTreeCtrl() { CancelDrag(); }

HTREEITEM CZelTreeCtrl::AddItem(DString const &text, std::uint64_t itemData, HTREEITEM parent, HTREEITEM after) {
    return Insert(parent, after,
                  {.mask = TVIF_TEXT | TVIF_PARAM | (m_images.IsCreated() ? TVIF_IMAGE | TVIF_SELECTEDIMAGE : 0U),
                   .iImage = m_defaultImage,
                   .iSelectedImage = m_defaultImage,
                   .lParam = static_cast<long long>(itemData)},
                  text);
}

HTREEITEM CZelTreeCtrl::FindItem(std::uint64_t itemData, HTREEITEM root) {
    CTreeCtrlItr item(this, root);
    for (item.Frst(); item.Cont() && (*item)->data != itemData; item.Next())
        ;
    return *item;
}

HTREEITEM CZelTreeCtrl::FindItem(DString const &text) {
    CTreeCtrlItr item(this, nullptr);
    for (item.Frst(); item.Cont() && (*item)->text != text; item.Next())
        ;
    return *item;
}

HTREEITEM CZelTreeCtrl::GetItem(Point const &screenPoint) const {
    QPoint const point = viewport()->mapFromGlobal(QPoint(screenPoint.x, screenPoint.y));
    return HitTest({point.x(), point.y()});
}

void CZelTreeCtrl::InitImages() {
    if (m_images.IsCreated())
        return;
    m_images.Bind(viewport());
    m_images.Create();
    SetImageList(m_images.GetHandle(), TVSIL_NORMAL, m_images.GetPictureSide());
}

void CZelTreeCtrl::InitImages(unsigned bitmapId, int cx, int grow, unsigned long mask) {
    if (m_images.IsCreated())
        return;
    m_images.Create(bitmapId, cx, grow, mask);
    m_images.Bind(viewport());
    SetImageList(m_images.GetHandle(), TVSIL_NORMAL, m_images.GetPictureSide());
}

void CZelTreeCtrl::ClearImages() {
    if (!m_images.IsCreated())
        return;
    SetImageList(nullptr, TVSIL_NORMAL);
    m_images.Clear();
}

void CZelTreeCtrl::SetImageOf(HTREEITEM item, int image) {
    if (image >= 0)
        SetItemImage(item, image, image);
}

void CZelTreeCtrl::DrawCircleSmall(HTREEITEM item, ColorRef fill, ColorRef border) {
    SetImageOf(item, m_images.GetCircleSmall(fill, border));
}

void CZelTreeCtrl::DrawRect(HTREEITEM item, ColorRef fill, ColorRef border) {
    SetImageOf(item, m_images.GetRect(fill, border));
}

void CZelTreeCtrl::DrawCircle(HTREEITEM item, ColorRef fill, ColorRef border, bool flag) {
    SetImageOf(item, m_images.GetCircle(fill, border, flag));
}

bool CZelTreeCtrl::DrawIcon(HTREEITEM item, unsigned iconId, char const *file) {
    if (!m_images.IsCreated())
        return true;
    bool const named = file != nullptr && *file != '\0';
    bool const isIcon = !named || platform::HasPicture({.kind = ImageDescription::Kind::File, .name = file});
    int const image = isIcon ? m_images.GetIcon(iconId, file) : -1;
    SetImageOf(item, image);
    return image >= 0;
}

bool CZelTreeCtrl::DrawPluginIcon(HTREEITEM item, unsigned iconId, char const *file) {
    DString name = file == nullptr ? "" : file;
    if (!name.empty() && !DFile(name).Exist())
        name = GetInstallBinDir() + "plugins" + PathStyle::Native().separator + name;
    return DrawIcon(item, iconId, name.c_str());
}

void CZelTreeCtrl::MoveScroll(int bar, int position) {
    (bar == SB_HORZ ? horizontalScrollBar() : verticalScrollBar())->setValue(position);
}

bool CZelTreeCtrl::DTCDblClck(HTREEITEM /*item*/, long long *result) {
    *result = 0;
    return false;
}

bool CZelTreeCtrl::DTCSlctChg(HTREEITEM /*oldItem*/, HTREEITEM /*newItem*/, long long *result) {
    *result = 0;
    return false;
}

void CZelTreeCtrl::DTCKeyDown(unsigned short /*key*/, long long *result) { *result = 0; }

bool CZelTreeCtrl::DTCCntxMenu(HTREEITEM /*item*/, Point /*point*/, long long *result) {
    *result = 0;
    return false;
}

bool CZelTreeCtrl::OnBeginLabelEdit(NMTVDISPINFO &info, long long *result) {
    if (!m_enableEdit)
        return false; // not refused: the parent decides
    m_savedScroll = horizontalScrollBar()->value();
    DTCBeginLabelEdit(&info.hdr, result);
    return *result != 0;
}

bool CZelTreeCtrl::OnEndLabelEdit(NMTVDISPINFO &info, long long *result) {
    if (!m_enableEdit)
        return false;
    QPointer<CZelTreeCtrl> const self(this);
    DTCEndLabelEdit(&info.hdr, result);
    if (!self.isNull())
        MoveScroll(SB_HORZ, m_savedScroll);
    return false;
}

bool CZelTreeCtrl::OnBegindrag(NMTREEVIEW &info) {
    if (m_enableLeftDrag)
        InitDrag(&info, DragLeft);
    return false;
}

bool CZelTreeCtrl::OnBeginrdrag(NMTREEVIEW &info) {
    if (m_enableRghtDrag)
        InitDrag(&info, DragRight);
    return false;
}

bool CZelTreeCtrl::OnKeydown(unsigned short key, long long *result) {
    DTCKeyDown(key, result);
    return false;
}

bool CZelTreeCtrl::OnSelchanged(HTREEITEM oldItem, HTREEITEM newItem) {
    long long result = 0;
    return DTCSlctChg(oldItem, newItem, &result);
}

bool CZelTreeCtrl::OnRclick(Point point) {
    if (!viewport()->rect().contains(point.x, point.y))
        return false;
    QPoint const screen = viewport()->mapToGlobal(QPoint(point.x, point.y));
    long long result = 0;
    return DTCCntxMenu(HitTest(point), {screen.x(), screen.y()}, &result);
}

bool CZelTreeCtrl::OnDblclk(Point point, long long *result) {
    bool const handled = DTCDblClck(HitTest(point), result);
    if (handled)
        *result = 1;
    return handled;
}

void CZelTreeCtrl::OnDeleteItem(HTREEITEM item) {
    if (item == m_clickItem)
        m_clickItem = nullptr;
    if (item == m_dragItem)
        CancelDrag();
    TreeView::OnDeleteItem(item);
}

bool CZelTreeCtrl::OnNotify(int code) {
    if (code != TTN_SHOW)
        return TreeView::OnNotify(code);
    QWidgetList const windows = QApplication::topLevelWidgets();
    for (QWidget *const window : windows)
        if (window->windowType() == Qt::ToolTip && window->isVisible())
            window->raise();
    return true;
}

bool CZelTreeCtrl::PreTranslateMessage(QEvent &message) {
    return GetEditControl() != nullptr || TreeView::PreTranslateMessage(message);
}

void CZelTreeCtrl::OnLButtonDown(unsigned flags, Point point) {
    QPointer<CZelTreeCtrl> const self(this);
    m_clickItem = HitTest(point);
    if (!DTCLButtonDown(m_clickItem, flags, point) && !self.isNull())
        TreeView::OnLButtonDown(flags, point);
}

void CZelTreeCtrl::OnLButtonUp(unsigned flags, Point point) {
    QPointer<CZelTreeCtrl> const self(this);
    if (m_dragMode == DragLeft)
        EndDrag(HitTest(point));
    if (self.isNull())
        return;
    TreeView::OnLButtonUp(flags, point);
    m_clickItem = nullptr;
}

void CZelTreeCtrl::OnRButtonDown(unsigned flags, Point point) {
    QPointer<CZelTreeCtrl> const self(this);
    if (TreeNode *const item = HitTest(point); item != nullptr && m_enableRghtSlct)
        SelectItem(item);
    if (self.isNull())
        return;
    m_clickItem = HitTest(point);
    TreeView::OnRButtonDown(flags, point);
}

void CZelTreeCtrl::OnRButtonUp(unsigned flags, Point point) {
    QPointer<CZelTreeCtrl> const self(this);
    if (m_dragMode == DragRight)
        EndDrag(HitTest(point));
    else
        TreeView::OnRButtonUp(flags, point);
    if (!self.isNull())
        m_clickItem = nullptr;
}

void CZelTreeCtrl::OnMouseMove(unsigned flags, Point point) {
    if (m_held) {
        unsigned const button = m_dragMode == DragLeft ? MK_LBUTTON : MK_RBUTTON;
        if ((flags & button) != 0)
            DragTo(point);
        else
            CancelDrag(); // the release went elsewhere
    }
    TreeView::OnMouseMove(flags, point);
}

void CZelTreeCtrl::InitDrag(NMTREEVIEW *info, int mode) {
    TreeNode *const item = info->itemNew.hItem;
    bool const buttonDown = (MouseFlags() & (MK_LBUTTON | MK_RBUTTON)) != 0;
    if (IsInDragMode() || !buttonDown || item == nullptr || !IsDragItem(item))
        return;
    m_dragMode = mode;
    m_dragItem = item;
    m_dragData = static_cast<std::uint64_t>(static_cast<std::uint32_t>(info->ptDrag.y)) << 32U |
                 static_cast<std::uint32_t>(info->ptDrag.x);
    m_dragImage = CreateDragImage(item);
    if (m_dragImage != nullptr) {
        m_dragImage->BeginDrag({0, 0});
        m_dragImage->DragEnter(*viewport(), info->ptDrag);
    }
    QApplication::setOverrideCursor(Qt::BlankCursor);
    viewport()->update();
    viewport()->grabMouse();
    m_held = true;
}

void CZelTreeCtrl::DragTo(Point point) {
    if (m_dragImage != nullptr)
        m_dragImage->DragMove(point);
    TreeNode *const hit = HitTest(point);
    if (m_dragImage != nullptr)
        m_dragImage->DragLeave();
    bool const takes = IsDragTrgt(m_dragItem, hit);
    if (!m_held)
        return; // the hook has ended it
    SelectDropTarget(takes ? hit : nullptr);
    ScrollForDrag(point);
    if (m_dragImage != nullptr)
        m_dragImage->DragEnter(*viewport(), point);
}

void CZelTreeCtrl::ScrollForDrag(Point point) {
    QScrollBar const &bar = *verticalScrollBar();
    TreeNode *const top = GetFirstVisibleItem();
    if (point.y >= viewport()->height() && bar.value() < bar.maximum())
        SelectSetFirstVisible(GetNextVisibleItem(top));
    else if (point.y < 0 && bar.value() > bar.minimum()) {
        TreeNode *const before = GetPrevSiblingItem(top);
        SelectSetFirstVisible(before != nullptr ? before : GetParentItem(top));
    }
}

void CZelTreeCtrl::ReleaseDrag() {
    if (!std::exchange(m_held, false))
        return;
    SelectDropTarget(nullptr);
    m_dragImage.reset();
    QApplication::restoreOverrideCursor();
    viewport()->update();
    viewport()->releaseMouse();
}

void CZelTreeCtrl::EndDrag(HTREEITEM target) {
    if (!m_held)
        return;
    TreeNode *const item = m_dragItem;
    ReleaseDrag();
    QPointer<CZelTreeCtrl> const self(this);
    if (IsDragTrgt(item, target))
        OnDragEnd(item, target);
    if (self.isNull())
        return;
    m_dragItem = nullptr;
    m_dragMode = DragNone;
}

void CZelTreeCtrl::CancelDrag() {
    // Not one that is about to end: its hook still knows it.
    if (!m_held)
        return;
    ReleaseDrag();
    m_dragItem = nullptr;
    m_dragMode = DragNone;
}

bool CZelTreeCtrl::event(QEvent *event) {
    switch (event->type()) {
    case QEvent::Hide:
    case QEvent::WindowDeactivate:
    case QEvent::WindowBlocked:
    case QEvent::ParentAboutToChange:
        CancelDrag();
        break;
    case QEvent::EnabledChange:
        if (!isEnabled())
            CancelDrag();
        break;
    case QEvent::ShortcutOverride:
        if (m_held && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
            event->accept(); // it ends the drag, not the dialog
            return true;
        }
        break;
    default:
        break;
    }
    return TreeView::event(event);
}

void CZelTreeCtrl::keyPressEvent(QKeyEvent *event) {
    if (m_held && event->key() == Qt::Key_Escape)
        CancelDrag();
    else
        TreeView::keyPressEvent(event);
}

} // namespace zelvar
