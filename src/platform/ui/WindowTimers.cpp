#include "zelvar/platform/ui/WindowTimers.h"

#include <QtCore/QObject>
#include <QtCore/QTimerEvent>

namespace zelvar::platform {

void WindowTimers::Set(int id, int milliseconds) {
    Kill(id);
    m_running[id] = m_window.startTimer(milliseconds);
}

void WindowTimers::Kill(int id) {
    auto const running = m_running.find(id);
    if (running == m_running.end())
        return;
    m_window.killTimer(running->second);
    m_running.erase(running);
}

bool WindowTimers::Expired(int id, QTimerEvent const &event) const {
    auto const running = m_running.find(id);
    return running != m_running.end() && running->second == event.timerId();
}

} // namespace zelvar::platform
