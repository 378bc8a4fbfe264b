#include "zelvar/platform/ui/EscapeWatch.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QWindow>
#include <QtWidgets/QWidget>

namespace zelvar::platform {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPatience{300};
constexpr milliseconds kInterval{40};

EscapeWatch *g_outermost = nullptr; // user-interface thread only

/// What the work would be disturbed by, or what was meant for something else.
bool IsDropped(QEvent::Type type) {
    switch (type) {
    case QEvent::Timer:
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
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

bool IsRelease(QEvent::Type type) { return type == QEvent::KeyRelease || type == QEvent::MouseButtonRelease; }

/// By what comes before each press: a shortcut may keep the press itself away.
bool IsEscape(QEvent const &event) {
    return event.type() == QEvent::ShortcutOverride && static_cast<QKeyEvent const &>(event).key() == Qt::Key_Escape;
}

/// Tool tips and popups come and go by themselves.
bool IsUsersToClose(QObject *watched) {
    Qt::WindowType type = Qt::Widget;
    if (auto const *const window = qobject_cast<QWindow const *>(watched))
        type = window->type();
    else if (auto const *const widget = qobject_cast<QWidget const *>(watched))
        type = widget->windowType();
    return type == Qt::Window || type == Qt::Dialog || type == Qt::Tool;
}

} // namespace

EscapeWatch::EscapeWatch() : m_next(m_begin + kPatience), m_outer(g_outermost) {
    if (m_outer == nullptr)
        g_outermost = this;
}

EscapeWatch::~EscapeWatch() {
    if (m_outer != nullptr)
        return;
    // What came behind the last look came while the work was going on too.
    if (m_hasLooked)
        Look();
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
    // What the first look finds was pressed before the time. If that look itself comes late nobody can tell.
    m_counts = m_hasLooked || Clock::now() >= m_next + kInterval;
    m_hasLooked = true;
    m_looking = true;
    qApp->installEventFilter(this);
    QCoreApplication::processEvents(QEventLoop::AllEvents, static_cast<int>(kInterval.count()) / 4);
    qApp->removeEventFilter(this);
    m_looking = false;
    m_next = Clock::now() + kInterval;
}

bool EscapeWatch::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Close && IsUsersToClose(watched)) {
        m_pressed = true;
        event->ignore();
        return true;
    }
    if (m_held.Keep(watched, *event))
        return true;
    if (IsRelease(event->type())) {
        if (!IsOfDroppedPress(*event))
            m_held.KeepCopy(watched, *event);
        return true;
    }
    if (!IsDropped(event->type()))
        return QObject::eventFilter(watched, event);
    NotePress(*event);
    m_pressed = m_pressed || (m_counts && IsEscape(*event));
    return true;
}

void EscapeWatch::NotePress(QEvent const &event) {
    if (event.type() == QEvent::KeyPress)
        m_droppedKeys.insert(static_cast<QKeyEvent const &>(event).key());
    else if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick)
        m_droppedButtons |= static_cast<QMouseEvent const &>(event).button();
}

bool EscapeWatch::IsOfDroppedPress(QEvent const &event) {
    if (event.type() == QEvent::KeyRelease)
        return m_droppedKeys.erase(static_cast<QKeyEvent const &>(event).key()) > 0;
    Qt::MouseButton const button = static_cast<QMouseEvent const &>(event).button();
    bool const dropped = m_droppedButtons.testFlag(button);
    m_droppedButtons.setFlag(button, false);
    return dropped;
}

} // namespace zelvar::platform
