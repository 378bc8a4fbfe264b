#include "zelvar/layout/HostScrollBars.h"

#include "zelvar/layout/core/ScrollRule.h"

#include <QtCore/QSignalBlocker>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QApplication>

#include <cstdlib>
#include <utility>

namespace zelvar {

namespace {

constexpr int kStep = 20; // pixels

/// No signal: the caller tells the move once both bars are right.
void SetRange(QScrollBar &bar, bool shown, int room, int content) {
    QSignalBlocker const quiet(bar);
    bar.setRange(0, shown ? content - room : 0);
    bar.setPageStep(room);
    bar.setVisible(shown);
}

} // namespace

HostScrollBars::HostScrollBars(QWidget &window, Size content, std::function<void(Point by)> scrolled)
    : m_window(window), m_content(content), m_scrolled(std::move(scrolled)),
      m_horizontal(new QScrollBar(Qt::Horizontal, &window)), m_vertical(new QScrollBar(Qt::Vertical, &window)),
      m_corner(new QWidget(&window)) {
    m_corner->setAutoFillBackground(true);
    m_corner->hide();
    for (QScrollBar *const bar : {m_horizontal.data(), m_vertical.data()}) {
        bar->hide();
        bar->setSingleStep(kStep);
        bar->setCursor(Qt::ArrowCursor);
        // What is left of a wheel at the end would come back from the window.
        bar->setAttribute(Qt::WA_NoMousePropagation);
        QObject::connect(bar, &QScrollBar::valueChanged, this, &HostScrollBars::TellMove);
    }
    window.installEventFilter(this);
    QObject::connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        // A control that moves away under the mouse would not be clicked.
        if (now != nullptr && m_window.isAncestorOf(now) && QApplication::mouseButtons() == Qt::NoButton)
            ShowChild(now);
    });
}

HostScrollBars::~HostScrollBars() {
    delete m_horizontal.data();
    delete m_vertical.data();
    delete m_corner.data();
}

void HostScrollBars::Fit() {
    int const thickness = m_vertical->sizeHint().width();
    ScrollNeed const need = ComputeScrollNeed({m_window.width(), m_window.height()}, m_content, thickness);
    SetRange(*m_horizontal, need.horizontal, need.client.cx, m_content.cx);
    SetRange(*m_vertical, need.vertical, need.client.cy, m_content.cy);
    m_horizontal->setGeometry(0, need.client.cy, need.client.cx, thickness);
    m_vertical->setGeometry(need.client.cx, 0, thickness, need.client.cy);
    m_corner->setGeometry(need.client.cx, need.client.cy, thickness, thickness);
    m_corner->setVisible(need.horizontal && need.vertical);
    m_corner->raise();
    m_horizontal->raise();
    m_vertical->raise();
    TellMove();
}

Size HostScrollBars::ClientSize() const {
    return {m_window.width() - (m_vertical->isHidden() ? 0 : m_vertical->width()),
            m_window.height() - (m_horizontal->isHidden() ? 0 : m_horizontal->height())};
}

Point HostScrollBars::Position() const { return {m_horizontal->value(), m_vertical->value()}; }

bool HostScrollBars::Owns(QWidget const *child) const {
    return child == m_horizontal || child == m_vertical || child == m_corner;
}

bool HostScrollBars::eventFilter(QObject *watched, QEvent *event) {
    if (watched != &m_window || event->type() != QEvent::Wheel)
        return false;
    QPoint const angle = static_cast<QWheelEvent const *>(event)->angleDelta();
    bool const along = m_vertical->isHidden() || std::abs(angle.x()) > std::abs(angle.y());
    QScrollBar &bar = along ? *m_horizontal : *m_vertical;
    if (bar.isHidden())
        return false;
    event->ignore();
    QCoreApplication::sendEvent(&bar, event);
    return event->isAccepted(); // at its end the window around may scroll
}

void HostScrollBars::ShowChild(QWidget const *child) {
    QRect const place(child->mapTo(&m_window, QPoint()), child->size());
    Size const room = ClientSize();
    if (!m_horizontal->isHidden())
        m_horizontal->setValue(m_horizontal->value() + ScrollIntoView(place.x(), place.x() + place.width(), room.cx));
    if (!m_vertical->isHidden())
        m_vertical->setValue(m_vertical->value() + ScrollIntoView(place.y(), place.y() + place.height(), room.cy));
}

void HostScrollBars::TellMove() {
    Point const now = Position();
    Point const before = std::exchange(m_told, now);
    if (now != before)
        m_scrolled({now.x - before.x, now.y - before.y});
}

} // namespace zelvar
