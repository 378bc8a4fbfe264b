#include "zelvar/views/RowDrag.h"

#include "zelvar/platform/ui/Convert.h"
#include "zelvar/views/ReportView.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace zelvar {

namespace {

constexpr int kMarkHeight = 2;       // pixels
constexpr int kScrollInterval = 100; // ms between two rows

} // namespace

RowDrag::RowDrag(ReportView &list, Rule rule)
    : m_list(list), m_rule(std::move(rule)), m_mark(new QWidget(list.viewport())) {
    m_mark->setObjectName("dropMark");
    m_mark->setAutoFillBackground(true);
    m_mark->setBackgroundRole(QPalette::Highlight);
    m_mark->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_mark->hide();
    list.viewport()->installEventFilter(this);
    list.installEventFilter(this);
}

RowDrag::~RowDrag() { End(); }

bool RowDrag::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return watched == m_list.viewport() && OnMouse(*static_cast<QMouseEvent *>(event));
    case QEvent::ShortcutOverride: // before the dialog takes it for its end
        if (m_isDragging && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
            event->accept();
            return true;
        }
        return false;
    case QEvent::KeyPress:
        if (!m_isDragging)
            return false;
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
            End();
        return true; // the rows stay as they are meanwhile
    case QEvent::FocusOut:
    case QEvent::Hide:
        if (watched == &m_list)
            End();
        return false;
    default:
        return QObject::eventFilter(watched, event);
    }
}

/// What is part of a drag goes no further: its end is no click.
bool RowDrag::OnMouse(QMouseEvent const &event) {
    m_point = event.position().toPoint();
    if (event.type() == QEvent::MouseButtonPress) {
        bool const isEnded = m_isDragging;
        End();
        int const row = m_list.SubItemHitTest(platform::ToPoint(event.position())).row;
        if (!isEnded && event.button() == Qt::LeftButton && row >= 0 && m_rule.isMovable(row)) {
            m_row = row;
            m_name = m_rule.nameOf(row);
            m_pressedAt = m_point;
        }
        return isEnded;
    }
    if (event.type() == QEvent::MouseButtonRelease) {
        bool const wasDragging = m_isDragging;
        int const row = m_row;
        bool const drops = wasDragging && event.button() == Qt::LeftButton && row < m_list.GetItemCount() &&
                           m_rule.isMovable(row) && m_rule.nameOf(row) == m_name;
        Slot const slot = drops ? SlotAt(m_point) : Slot();
        End();
        if (slot.beside >= 0)
            m_rule.drop(row, slot.beside, slot.behind);
        return wasDragging;
    }
    if (m_row < 0 || (event.buttons() & Qt::LeftButton) == 0)
        return m_isDragging;
    if (!m_isDragging && (m_point - m_pressedAt).manhattanLength() >= QApplication::startDragDistance())
        Begin();
    if (m_isDragging)
        Follow();
    return m_isDragging;
}

void RowDrag::Begin() {
    m_isDragging = true;
    qApp->installEventFilter(this); // before the dialog, which has another use for keys
    m_list.viewport()->setCursor(Qt::ClosedHandCursor);
    m_scrolling.start(kScrollInterval, this);
}

void RowDrag::End() {
    m_row = -1;
    m_name.clear();
    m_scrolling.stop();
    m_mark->hide();
    if (!std::exchange(m_isDragging, false))
        return;
    qApp->removeEventFilter(this);
    m_list.viewport()->unsetCursor();
}

/// The gap between two rows that is nearest to the point; none outside the window, or away from such rows.
RowDrag::Slot RowDrag::SlotAt(QPoint point) const {
    if (!m_list.viewport()->rect().contains(point))
        return {};
    Slot best;
    int nearest = m_list.RowHeight();
    for (int row = 0; row < m_list.GetItemCount(); ++row) {
        if (!m_rule.isMovable(row))
            continue;
        Rect const rect = m_list.GetItemRect(row);
        for (Slot const &slot : {Slot{row, false, rect.top}, Slot{row, true, rect.bottom}})
            if (int const distance = std::abs(point.y() - slot.y); distance < nearest) {
                nearest = distance;
                best = slot;
            }
    }
    return best;
}

void RowDrag::Follow() {
    Slot const slot = SlotAt(m_point);
    m_mark->setGeometry(0, slot.y - kMarkHeight / 2, m_list.viewport()->width(), kMarkHeight);
    m_mark->setVisible(slot.beside >= 0);
    m_mark->raise();
}

void RowDrag::timerEvent(QTimerEvent *event) {
    if (event->timerId() != m_scrolling.timerId())
        return QObject::timerEvent(event);
    int const edge = m_list.RowHeight() / 2;
    int const bottom = m_list.viewport()->height();
    if (m_point.y() >= edge && m_point.y() < bottom - edge)
        return;
    m_list.verticalScrollBar()->triggerAction(m_point.y() < edge ? QAbstractSlider::SliderSingleStepSub
                                                                 : QAbstractSlider::SliderSingleStepAdd);
    Follow();
}

} // namespace zelvar
