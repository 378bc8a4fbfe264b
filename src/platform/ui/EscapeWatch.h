#pragma once

#include "zelvar/platform/ui/WindowMessage.h"

#include <QtCore/QObject>

#include <chrono>
#include <set>

namespace zelvar::platform {

/// Lets the user stop work that runs on the windows' thread by its nature: while it goes on, windows are painted, and
/// Escape is heard once it has run for 300 ms; an attempt to close a window counts as Escape. Nothing else happens
/// meanwhile: other keys and clicks are dropped, as they were meant for what is about to be replaced, timers wait, and
/// messages are delivered afterwards, before newer ones. A key or button that was pressed before is released afterwards
/// too. Work that takes less than 300 ms leaves all events alone.
///
/// Queued calls of the toolkit come through: what starts such work is a message, never a queued call.
///
/// User-interface thread. One that is made inside another's life asks that one: several lists that are filled one after
/// the other end at one key.
class ZELVAR_API EscapeWatch : public QObject {
public:
    EscapeWatch();
    ~EscapeWatch() override;

    /// To be called often, it costs a look at the clock; true from the moment at which Escape was pressed.
    bool IsPressed();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    using Clock = std::chrono::steady_clock;
    void Look();
    void NotePress(QEvent const &event);
    [[nodiscard]] bool IsOfDroppedPress(QEvent const &event);

    HeldMessages m_held;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_next; ///< look at the events
    EscapeWatch *m_outer;
    std::set<int> m_droppedKeys;
    Qt::MouseButtons m_droppedButtons;
    bool m_looking = false;
    bool m_hasLooked = false;
    bool m_counts = false; ///< what is pressed now
    bool m_pressed = false;
};

} // namespace zelvar::platform
