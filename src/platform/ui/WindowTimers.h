#pragma once

#include <unordered_map>

class QObject;
class QTimerEvent;

namespace zelvar::platform {

/// The timers of one window by the numbers that the window gave them. Expiries arrive at the window's `timerEvent`.
class WindowTimers {
public:
    explicit WindowTimers(QObject &window) : m_window(window) {}
    WindowTimers(WindowTimers const &) = delete;
    WindowTimers &operator=(WindowTimers const &) = delete;

    /// Starts the timer, or starts it anew from now.
    void Set(int id, int milliseconds);
    void Kill(int id);
    [[nodiscard]] bool IsRunning(int id) const { return m_running.contains(id); }
    /// Whether the event is the expiry of timer `id`.
    [[nodiscard]] bool Expired(int id, QTimerEvent const &event) const;

private:
    QObject &m_window;                      ///< not owned
    std::unordered_map<int, int> m_running; ///< our number to the toolkit's
};

} // namespace zelvar::platform
