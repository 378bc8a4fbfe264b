#include "zelvar/platform/ui/EscapeWatch.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QKeyEvent>

namespace zelvar::platform {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPatience{300};
constexpr milliseconds kInterval{40};

EscapeWatch *g_outermost = nullptr; // user-interface thread only

/// What the work would be disturbed by, or what was meant for something else.
bool IsHeldBack(QEvent::Type type) {
    switch (type) {
    case QEvent::Timer:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

} // namespace

EscapeWatch::EscapeWatch() : m_next(Clock::now() + kPatience), m_outer(g_outermost) {
    if (m_outer == nullptr)
        g_outermost = this;
}

EscapeWatch::~EscapeWatch() {
    if (m_outer == nullptr)
        g_outermost = nullptr;
}

bool EscapeWatch::IsPressed() {
    if (m_outer != nullptr)
        return m_outer->IsPressed();
    if (!m_pressed && !m_looking && Clock::now() >= m_next)
        Look();
    return m_pressed;
}

void EscapeWatch::Look() {
    m_looking = true;
    qApp->installEventFilter(this);
    QCoreApplication::processEvents(QEventLoop::AllEvents, static_cast<int>(kInterval.count()) / 4);
    qApp->removeEventFilter(this);
    m_looking = false;
    m_next = Clock::now() + kInterval;
}

bool EscapeWatch::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Close) {
        m_pressed = true;
        event->ignore();
        return true;
    }
    if (m_held.Keep(watched, *event))
        return true;
    if (!IsHeldBack(event->type()))
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        m_pressed = true;
    return true;
}

} // namespace zelvar::platform
