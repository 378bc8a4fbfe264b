#include "zelvar/lists/CEditCell.h"

#include "zelvar/lists/CListCtrlFlex.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/ReportPainter.h"

#include <QtCore/QPointer>
#include <QtGui/QKeyEvent>

#include <algorithm>
#include <utility>

namespace zelvar {

namespace {

constexpr int kLastTabColumn = 2; // Tab goes round three columns, however many the list has
constexpr int kGrowthMargin = 5;  // pixels behind the text

bool IsOurKey(QKeyEvent const &event) {
    switch (event.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp: // it moves when it is released, and must not move the list when it is pressed
    case Qt::Key_PageDown:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
        return true;
    case Qt::Key_Home:
    case Qt::Key_End:
        return (event.modifiers() & Qt::ControlModifier) != 0;
    default:
        return false;
    }
}

} // namespace

CEditCell::CEditCell(CListCtrlFlex &list, int item, int subItem, DString initialText)
    : QLineEdit(list.viewport()), m_list(&list), m_item(item), m_subItem(subItem),
      m_initialText(std::move(initialText)) {
    platform::SetDlgCtrlID(*this, kControlId);
    setFrame(false);
    setFont(list.font());
    ReportColumn column;
    if (list.GetColumn(subItem, column))
        setAccessibleName(platform::ToQString(column.caption));
}

void CEditCell::Open(Rect const &place) {
    setGeometry(platform::ToQRect(place));
    setText(platform::ToQString(m_initialText));
    // On the way from cell to cell the former one ends by the focus that is taken here, and says that editing is over:
    // the list may show the arrow over a cell that is open.
    m_list->SetInEditing(true);
    show();
    setFocus(Qt::OtherFocusReason);
    selectAll();
}

void CEditCell::Follow() {
    if (m_list == nullptr || m_ended)
        return;
    Rect const place = m_list->GetSubItemRect(m_item, m_subItem, LVIR_LABEL);
    int const width = std::max(place.Width(), m_grownWidth);
    setGeometry(isRightToLeft() ? place.right - width : place.left, place.top, width, place.Height());
}

void CEditCell::MoveCell(int item, int subItem) {
    if (m_list == nullptr || m_ended)
        return;
    m_item = item;
    m_subItem = subItem;
    if (item >= 0 && subItem >= 0) {
        Follow();
        return;
    }
    m_cancelled = true;
    LeaveToList();
}

bool CEditCell::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride && IsOurKey(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    // Tab must not reach the toolkit, which would move the focus by itself.
    if (event->type() == QEvent::KeyPress) {
        auto const &key = *static_cast<QKeyEvent *>(event);
        if (key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab) {
            MoveByTab(key.key() == Qt::Key_Backtab || (key.modifiers() & Qt::ShiftModifier) != 0);
            event->accept();
            return true;
        }
    }
    return QLineEdit::event(event);
}

void CEditCell::keyPressEvent(QKeyEvent *event) {
    if (m_list == nullptr || m_ended)
        return;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // The loss of the focus commits the same text once more.
        QPointer<CEditCell> const self(this);
        CommitText();
        if (!self.isNull())
            LeaveToList();
    } else if (event->key() == Qt::Key_Escape) {
        m_cancelled = true;
        LeaveToList();
    } else if (!MoveByKey(*event)) {
        QLineEdit::keyPressEvent(event);
        GrowToText();
    }
}

bool CEditCell::MoveByKey(QKeyEvent const &event) {
    if (!IsOurKey(event))
        return false;
    if (event.key() == Qt::Key_Up && m_item > 0)
        MoveTo(m_item - 1, m_subItem);
    else if (event.key() == Qt::Key_Down)
        MoveTo(m_item + 1, m_subItem);
    else if (event.key() == Qt::Key_Home)
        MoveTo(0, m_subItem);
    else if (event.key() == Qt::Key_End)
        MoveTo(m_list->GetItemCount() - 1, m_subItem);
    return true;
}

void CEditCell::keyReleaseEvent(QKeyEvent *event) {
    bool const page = event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown;
    if (!page || event->isAutoRepeat() || m_list == nullptr || m_ended)
        return QLineEdit::keyReleaseEvent(event);
    int const rows = m_list->GetItemCount();
    int const perPage = m_list->GetCountPerPage();
    if (event->key() == Qt::Key_PageUp)
        MoveTo(std::max(m_item - perPage, 0), m_subItem);
    else
        MoveTo(m_item + perPage < rows ? m_item + perPage : rows - 1, m_subItem);
}

void CEditCell::MoveByTab(bool back) {
    if (!back && m_subItem < kLastTabColumn)
        MoveTo(m_item, m_subItem + 1);
    else if (!back)
        MoveTo(m_item + 1, 0);
    else if (m_subItem > 0)
        MoveTo(m_item, m_subItem - 1);
    else if (m_item > 0)
        MoveTo(m_item - 1, kLastTabColumn);
}

void CEditCell::MoveTo(int item, int subItem) {
    if (m_list == nullptr || m_ended)
        return;
    QPointer<CEditCell> const self(this);
    m_list->OnEdit(item, subItem, true);
    // Past the last row there is no cell to go on with: the edit just ends.
    if (!self.isNull() && !m_ended && m_list != nullptr && !m_list->LeadsToCell(item, subItem, true))
        LeaveToList();
}

void CEditCell::CommitText() {
    if (m_committing || m_list == nullptr)
        return;
    m_committing = true;
    DString const typed = platform::ToDString(text());
    QPointer<CEditCell> const self(this);
    m_list->TellEndOfEdit({.hwndFrom = m_list,
                           .idFrom = kControlId,
                           .wParam = platform::GetDlgCtrlID(*m_list),
                           .iItem = m_item,
                           .iSubItem = m_subItem,
                           .pszText = m_cancelled ? nullptr : &typed});
    if (!self.isNull())
        m_committing = false;
}

void CEditCell::LeaveToList() {
    if (m_list != nullptr)
        m_list->setFocus(Qt::OtherFocusReason);
    // Without the focus its loss cannot end the edit.
    if (!m_ended && !hasFocus()) {
        CommitText();
        End();
    }
}

void CEditCell::focusOutEvent(QFocusEvent *event) {
    QLineEdit::focusOutEvent(event);
    // Its own menu takes the keyboard for a moment only.
    if (m_ended || event->reason() == Qt::PopupFocusReason)
        return;
    QPointer<CEditCell> const self(this);
    CommitText();
    if (!self.isNull())
        End();
}

void CEditCell::End() {
    if (m_ended)
        return;
    m_ended = true;
    platform::SetDlgCtrlID(*this, 0);
    if (m_list != nullptr)
        m_list->SetInEditing(false);
    hide();
    deleteLater();
}

void CEditCell::GrowToText() {
    int const needed = QFontMetrics(m_list->font()).horizontalAdvance(text()) + kGrowthMargin;
    if (needed <= width())
        return;
    // To the edge of the list where the lines end.
    int const end = x() + width();
    int const room = isRightToLeft() ? end : m_list->GetClientRect().right - x();
    int const grown = std::min(needed, room);
    if (grown <= width())
        return;
    m_grownWidth = grown;
    setGeometry(isRightToLeft() ? end - grown : x(), y(), grown, height());
}

} // namespace zelvar
