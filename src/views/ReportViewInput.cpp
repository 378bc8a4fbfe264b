// What the keyboard and the mouse do in a report view.
#include "zelvar/platform/ui/Convert.h"
#include "zelvar/views/ReportAccessible.h"
#include "zelvar/views/ReportView.h"

#include <QtGui/QContextMenuEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QScrollBar>

#include <algorithm>

namespace zelvar {

namespace {

constexpr qint64 kTypingPause = 1000; // milliseconds after which a new word begins

/// Text that a list takes itself, so that no shortcut of the application gets it.
bool IsTyping(QKeyEvent const &event) {
    bool const command = (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    return !command && !event.text().isEmpty() && event.text().at(0).isPrint();
}

} // namespace

IntervalSet ReportView::RangeTo(int row) const {
    RowGeometry const &geometry = Geometry();
    int const anchor = HasRow(m_selection.Anchor()) ? m_selection.Anchor()
                       : HasRow(GetFocusRow())      ? GetFocusRow()
                                                    : row;
    auto const [first, last] = std::minmax({geometry.PositionOfRow(anchor), geometry.PositionOfRow(row)});
    IntervalSet rows;
    if (!geometry.IsGrouped())
        rows.Insert(first, last);
    for (int position = first; geometry.IsGrouped() && position <= last; ++position)
        rows.Insert(geometry.RowAtPosition(position), geometry.RowAtPosition(position));
    return rows;
}

void ReportView::Press(int row, Qt::KeyboardModifiers modifiers, bool left) {
    bool const ctrl = (modifiers & Qt::ControlModifier) != 0;
    bool const shift = (modifiers & Qt::ShiftModifier) != 0;
    bool const selected = m_selection.Selected().Contains(row);
    if (!left && selected) {
        // The menu is for the whole selection.
        m_selection.SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    } else if (shift && left && (m_style & LVS_SINGLESEL) == 0) {
        if (!HasRow(m_selection.Anchor()))
            m_selection.SetAnchor(std::max(GetFocusRow(), 0));
        IntervalSet rows = RangeTo(row);
        if (ctrl)
            m_selection.Selected().ForEachInterval([&rows](int first, int last) { rows.Insert(first, last); });
        m_selection.Select(rows, row);
    } else if (ctrl && left) {
        m_selection.SetAnchor(row);
        m_selection.SetState(row, LVIS_FOCUSED | (selected ? 0U : LVIS_SELECTED), LVIS_FOCUSED | LVIS_SELECTED);
    } else {
        SelectOnly(row);
    }
}

void ReportView::mousePressEvent(QMouseEvent *event) {
    bool const left = event->button() == Qt::LeftButton;
    if (!left && event->button() != Qt::RightButton) {
        event->ignore();
        return;
    }
    m_pressed = true;
    m_clickModifiers = event->modifiers();
    // A press beside the rows leaves the selection as it is.
    ReportHit const hit = SubItemHitTest(platform::ToPoint(event->position()));
    if (hit.row >= 0) {
        Press(hit.row, event->modifiers(), left);
        EnsureVisible(hit.row, true);
    }
}

void ReportView::mouseReleaseEvent(QMouseEvent *event) {
    Point const point = platform::ToPoint(event->position());
    if (!std::exchange(m_pressed, false) || !GetClientRect().Contains(point))
        return;
    ReportHit const hit = SubItemHitTest(point);
    if (event->button() == Qt::LeftButton && !OnClick(hit, point))
        Q_EMIT Click(hit.row, hit.col);
    else if (event->button() == Qt::RightButton && !OnRClick(hit, point))
        Q_EMIT RightClick(hit.row, hit.col);
}

void ReportView::mouseDoubleClickEvent(QMouseEvent *event) {
    if (event->button() != Qt::LeftButton)
        return mousePressEvent(event);
    Point const point = platform::ToPoint(event->position());
    ReportHit const hit = SubItemHitTest(point);
    if (!OnDblClick(hit, point))
        Q_EMIT DoubleClick(hit.row, hit.col);
}

void ReportView::mouseMoveEvent(QMouseEvent *event) { OnMouseMove(platform::ToPoint(event->position())); }

void ReportView::contextMenuEvent(QContextMenuEvent *event) {
    QPoint at = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        Rect const row = GetItemRect(std::max(GetFocusRow(), 0));
        int const x = isRightToLeft() ? row.right - 4 : row.left + 4;
        at = viewport()->mapToGlobal(QPoint(x, std::clamp(row.bottom, 0, viewport()->height())));
    }
    if (!OnContextMenu(at))
        Q_EMIT ContextMenu(at);
}

std::optional<int> ReportView::MoveTarget(int key) const {
    RowGeometry const &geometry = Geometry();
    int const last = geometry.RowCount() - 1;
    if (last < 0)
        return std::nullopt;
    int const focus = GetFocusRow();
    int const at = focus < 0 ? -1 : geometry.PositionOfRow(focus);
    int const page = std::max(GetCountPerPage() - 1, 1);
    switch (key) {
    case Qt::Key_Up:
        return std::max(at - 1, 0);
    case Qt::Key_Down:
        return std::min(at + 1, last);
    case Qt::Key_PageUp:
        return std::max(at - page, 0);
    case Qt::Key_PageDown:
        return std::min(std::max(at, 0) + page, last);
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return last;
    default:
        return std::nullopt;
    }
}

void ReportView::MoveFocus(int position, Qt::KeyboardModifiers modifiers) {
    int const row = Geometry().RowAtPosition(position);
    bool const multiple = (m_style & LVS_SINGLESEL) == 0;
    if (multiple && (modifiers & Qt::ShiftModifier) != 0)
        Press(row, modifiers, true);
    else if (multiple && (modifiers & Qt::ControlModifier) != 0)
        m_selection.SetState(row, LVIS_FOCUSED, LVIS_FOCUSED);
    else
        SelectOnly(row);
    EnsureVisible(row);
}

bool ReportView::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride) {
        auto *const key = static_cast<QKeyEvent *>(event);
        if (IsTyping(*key) || key->matches(QKeySequence::SelectAll)) {
            key->accept();
            return true;
        }
    }
    bool const handled = ColumnArea::event(event);
    if (event->type() == QEvent::LayoutRequest)
        UpdateVerticalBar();
    return handled;
}

void ReportView::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::SelectAll)) {
        if ((m_style & LVS_SINGLESEL) == 0)
            m_selection.SetState(-1, LVIS_SELECTED, LVIS_SELECTED);
        return;
    }
    if (std::optional<int> const target = MoveTarget(event->key())) {
        MoveFocus(*target, event->modifiers());
        return;
    }
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        bool const goesBack = (event->key() == Qt::Key_Left) != isRightToLeft();
        horizontalScrollBar()->triggerAction(goesBack ? QAbstractSlider::SliderSingleStepSub
                                                      : QAbstractSlider::SliderSingleStepAdd);
        return;
    }
    bool const searching = m_typedAt.isValid() && m_typedAt.elapsed() < kTypingPause && !m_typed.isEmpty();
    if (event->key() == Qt::Key_Space && GetFocusRow() >= 0 && !searching) {
        Press(GetFocusRow(), event->modifiers(), true);
        return;
    }
    if (IsTyping(*event)) {
        OnChar(event->text().at(0));
        return;
    }
    // Return, Escape, Tab and commands are the dialog's.
    event->ignore();
}

void ReportView::OnChar(QChar character) {
    if (!m_typedAt.isValid() || m_typedAt.elapsed() >= kTypingPause)
        m_typed.clear();
    m_typedAt.start();
    m_typed += character;
    if (IsVirtual())
        return;
    // One letter goes on to the next row; a word that grows may stay on its row.
    RowGeometry const &geometry = Geometry();
    int const count = geometry.RowCount();
    int const focus = GetFocusRow() < 0 ? -1 : geometry.PositionOfRow(GetFocusRow());
    int const start = m_typed.size() > 1 ? std::max(focus, 0) : focus + 1;
    for (int step = 0; step < count; ++step) {
        int const position = (start + step) % count;
        if (ShownText(geometry.RowAtPosition(position), 0).startsWith(m_typed, Qt::CaseInsensitive)) {
            MoveFocus(position, {});
            return;
        }
    }
}

void ReportView::focusInEvent(QFocusEvent *event) {
    ColumnArea::focusInEvent(event);
    viewport()->update();
    ReportAccessible::FocusEntered(*this);
}

void ReportView::focusOutEvent(QFocusEvent *event) {
    ColumnArea::focusOutEvent(event);
    viewport()->update();
}

} // namespace zelvar
