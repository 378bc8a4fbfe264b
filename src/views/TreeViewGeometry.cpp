// What stands where in a tree view, and what becomes of events there.
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/platform/ui/EscapeWatch.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/platform/ui/VirtualKey.h"
#include "zelvar/views/TreeInput.h"
#include "zelvar/views/TreeItemDelegate.h"
#include "zelvar/views/TreeLabelEdit.h"
#include "zelvar/views/TreeModel.h"
#include "zelvar/views/TreeView.h"
#include "zelvar/views/Typing.h"

#include <QtGui/QContextMenuEvent>
#include <QtGui/QHelpEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QToolTip>

#include <algorithm>
#include <optional>

namespace zelvar {

/// Where the parts of an item stand, in viewport pixels.
struct TreeView::Parts {
    QRect row;
    QRect button; ///< where its expander is or would be
    QRect icon;   ///< empty without images
    QRect label;  ///< the text with a little margin
};

TreeView::Parts TreeView::PartsOf(TreeNode const &item) const {
    QModelIndex const index = m_model->IndexOf(&item);
    Parts parts;
    parts.row = visualRect(index);
    if (!parts.row.isValid())
        return parts;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = parts.row;
    m_delegate->Describe(option, index);
    if ((option.features & QStyleOptionViewItem::HasDecoration) != 0)
        parts.icon = style()->subElementRect(QStyle::SE_ItemViewItemDecoration, &option, this);
    QRect const text = style()->subElementRect(QStyle::SE_ItemViewItemText, &option, this);
    int const margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, this) + 1;
    int const width = option.fontMetrics.horizontalAdvance(option.text) + 2 * margin;
    bool const mirrored = isRightToLeft();
    parts.label = QRect(mirrored ? text.right() + 1 - width : text.left(), parts.row.top(), width, parts.row.height());
    parts.button = QRect(mirrored ? parts.row.right() + 1 : parts.row.left() - indentation(), parts.row.top(),
                         indentation(), parts.row.height());
    return parts;
}

bool TreeView::GetItemRect(HTREEITEM item, Rect &rect, bool textOnly) const {
    if (item == nullptr || !m_model->Nodes().IsShown(*item))
        return false;
    Parts const parts = PartsOf(*item);
    if (!parts.row.isValid())
        return false;
    QRect const part = textOnly ? parts.label : QRect(0, parts.row.top(), viewport()->width(), parts.row.height());
    rect = {part.left(), part.top(), part.left() + part.width(), part.top() + part.height()};
    return true;
}

HTREEITEM TreeView::HitTest(TVHITTESTINFO *info) const {
    info->hItem = nullptr;
    info->flags = 0;
    QPoint const at(info->pt.x, info->pt.y);
    info->flags |= at.y() < 0 ? TVHT_ABOVE : at.y() >= viewport()->height() ? TVHT_BELOW : 0U;
    info->flags |= at.x() < 0 ? TVHT_TOLEFT : at.x() >= viewport()->width() ? TVHT_TORIGHT : 0U;
    if (info->flags != 0)
        return nullptr;
    QModelIndex const index = indexAt(at);
    if (!index.isValid()) {
        info->flags = TVHT_NOWHERE;
        return nullptr;
    }
    info->hItem = m_model->NodeOf(index);
    Parts const parts = PartsOf(*info->hItem);
    bool const behind = isRightToLeft() ? at.x() < parts.label.left() : at.x() > parts.label.right();
    if (parts.icon.contains(at))
        info->flags = TVHT_ONITEMICON;
    else if (parts.label.contains(at))
        info->flags = TVHT_ONITEMLABEL;
    else if (parts.button.contains(at) && ItemHasChildren(info->hItem))
        info->flags = TVHT_ONITEMBUTTON;
    else
        info->flags = behind ? TVHT_ONITEMRIGHT : TVHT_ONITEMINDENT;
    return info->hItem;
}

HTREEITEM TreeView::HitTest(Point point, unsigned *flags) const {
    TVHITTESTINFO info{.pt = point};
    HitTest(&info);
    if (flags != nullptr)
        *flags = info.flags;
    return info.hItem;
}

std::unique_ptr<DragImage> TreeView::CreateDragImage(HTREEITEM item) {
    if (item == nullptr || !m_model->Nodes().IsShown(*item))
        return nullptr;
    Parts const parts = PartsOf(*item);
    if (!parts.row.isValid())
        return nullptr;
    QRect const place = parts.label.united(parts.icon);
    qreal const ratio = devicePixelRatioF();
    QPixmap picture((QSizeF(place.size()) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = QRect(parts.row.topLeft() - place.topLeft(), QSize(parts.row.width(), parts.row.height()));
    m_delegate->paint(&painter, option, m_model->IndexOf(item));
    return std::make_unique<DragImage>(picture);
}

// --- the mouse and the keyboard ---

unsigned TreeView::MouseFlags() const { return m_input->Flags(); }

void TreeView::OnLButtonDown(unsigned /*flags*/, Point point) { m_input->LeftDown(point); }

void TreeView::OnLButtonUp(unsigned /*flags*/, Point /*point*/) { m_input->LeftUp(); }

void TreeView::OnRButtonDown(unsigned /*flags*/, Point point) { m_input->RightDown(point); }

void TreeView::OnRButtonUp(unsigned /*flags*/, Point point) {
    m_input->RightUp();
    TellRightClick(point);
}

void TreeView::OnMouseMove(unsigned flags, Point point) {
    std::optional<TreeInput::Drag> const drag = m_input->Move(flags, point);
    if (!drag)
        return;
    NMTREEVIEW info{
        .hdr = {this, platform::GetDlgCtrlID(*this), drag->left ? TVN_BEGINDRAG : TVN_BEGINRDRAG},
        .itemNew = {.mask = TVIF_HANDLE, .hItem = drag->item, .lParam = static_cast<long long>(drag->item->data)},
        .ptDrag = drag->from,
    };
    if (drag->left && !OnBegindrag(info))
        Q_EMIT BeginDrag(&info);
    else if (!drag->left && !OnBeginrdrag(info))
        Q_EMIT BeginRightDrag(&info);
}

void TreeView::TellRightClick(Point point) {
    if (!OnRclick(point))
        Q_EMIT RightClick(point);
}

void TreeView::mousePressEvent(QMouseEvent *event) {
    EndEditLabelNow(false);
    if (event->button() == Qt::LeftButton)
        OnLButtonDown(m_input->NoteFlags(*event), platform::ToPoint(event->position()));
    else if (event->button() == Qt::RightButton)
        OnRButtonDown(m_input->NoteFlags(*event), platform::ToPoint(event->position()));
    else
        event->ignore();
}

void TreeView::mouseReleaseEvent(QMouseEvent *event) {
    if (event->button() == Qt::LeftButton)
        OnLButtonUp(m_input->NoteFlags(*event), platform::ToPoint(event->position()));
    else if (event->button() == Qt::RightButton)
        OnRButtonUp(m_input->NoteFlags(*event), platform::ToPoint(event->position()));
    else
        event->ignore();
}

void TreeView::mouseDoubleClickEvent(QMouseEvent *event) {
    Point const point = platform::ToPoint(event->position());
    unsigned part = 0;
    TreeNode *const item = HitTest(point, &part);
    // On an expander the second click of two is a click like the first.
    if (event->button() != Qt::LeftButton || (part & TVHT_ONITEMBUTTON) != 0) {
        mousePressEvent(event);
        return;
    }
    m_input->DoubleClick();
    QPointer<TreeView> const self(this);
    QPersistentModelIndex const index(m_model->IndexOf(item));
    long long result = 0;
    if (!OnDblclk(point, &result) && !self.isNull())
        Q_EMIT DoubleClick(point, &result);
    if (!self.isNull() && result == 0 && index.isValid() && (part & TVHT_ONITEM) != 0)
        Expand(item, TVE_TOGGLE);
}

void TreeView::mouseMoveEvent(QMouseEvent *event) {
    OnMouseMove(m_input->NoteFlags(*event), platform::ToPoint(event->position()));
}

void TreeView::contextMenuEvent(QContextMenuEvent *event) {
    event->accept();
    // The mouse tells by its release.
    if (event->reason() == QContextMenuEvent::Mouse)
        return;
    TellMenuKey();
}

void TreeView::TellMenuKey() {
    Rect label;
    if (m_selected != nullptr)
        EnsureVisible(m_selected);
    if (!GetItemRect(m_selected, label, true))
        return;
    TellRightClick({std::clamp((label.left + label.right) / 2, 0, viewport()->width() - 1),
                    std::clamp((label.top + label.bottom) / 2, 0, viewport()->height() - 1)});
}

void TreeView::keyPressEvent(QKeyEvent *event) {
    QPointer<TreeView> const self(this);
    unsigned short const key = platform::VirtualKey(event->key());
    long long result = 0;
    if (!OnKeydown(key, &result) && !self.isNull())
        Q_EMIT KeyDown(key);
    if (self.isNull() || (result != 0 && TypesText(*event)))
        return;
    if (!m_input->Key(*event) && !self.isNull())
        QTreeView::keyPressEvent(event);
}

void TreeView::timerEvent(QTimerEvent *event) {
    if (!m_input->TimerFired(event->timerId()))
        QTreeView::timerEvent(event);
}

bool TreeView::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride && TypesText(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QTreeView::event(event);
}

bool TreeView::viewportEvent(QEvent *event) {
    if (event->type() == QEvent::ToolTip) {
        if (ShowLabelTip(*static_cast<QHelpEvent *>(event)))
            OnNotify(TTN_SHOW);
        return true;
    }
    return QTreeView::viewportEvent(event);
}

bool TreeView::ShowLabelTip(QHelpEvent const &event) {
    unsigned flags = 0;
    TreeNode *const item = HitTest(platform::ToPoint(event.pos()), &flags);
    QRect const label = item == nullptr ? QRect() : PartsOf(*item).label;
    if ((flags & TVHT_ONITEMLABEL) == 0 || viewport()->rect().contains(label)) {
        QToolTip::hideText();
        return false;
    }
    QToolTip::showText(event.globalPos(), platform::ToToolTip(platform::ToQString(item->text)), viewport(), label);
    return true;
}

void TreeView::resizeEvent(QResizeEvent *event) {
    header()->setMinimumSectionSize(viewport()->width());
    QTreeView::resizeEvent(event);
}

void TreeView::scrollContentsBy(int dx, int dy) {
    EndEditLabelNow(false); // it would stand beside its item
    QTreeView::scrollContentsBy(dx, dy);
}

} // namespace zelvar
