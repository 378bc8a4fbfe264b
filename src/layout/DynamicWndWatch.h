#pragma once

#include "zelvar/layout/cdxCDynamicWnd.h"

#include <QtCore/QBasicTimer>
#include <QtCore/QTimerEvent>

namespace zelvar {

/// Hears for the engine, which is no object of the toolkit: of children that die and of the timer.
class cdxCDynamicWnd::Watch : public QObject {
public:
    explicit Watch(cdxCDynamicWnd &engine) : m_engine(engine) {}

    void Over(QWidget &child) {
        QObject::connect(&child, &QObject::destroyed, this, [this, died = &child] { m_engine.DoDestroyCtrl(died); });
    }
    void NoMoreOver(QWidget &child) { QObject::disconnect(&child, &QObject::destroyed, this, nullptr); }

    /// Starts the one-shot timer of the engine anew.
    void StartTimer(std::intptr_t id) {
        constexpr int milliseconds = 120;
        m_id = id;
        m_timer.start(milliseconds, this);
    }
    void StopTimer() { m_timer.stop(); }
    /// Hears of nothing any more.
    void Rest() {
        m_timer.stop();
        for (auto const &entry : m_engine.m_map)
            NoMoreOver(*entry.first);
    }

protected:
    void timerEvent(QTimerEvent *event) override {
        if (event->timerId() == m_timer.timerId())
            m_engine.DoOnTimer(m_id);
    }

private:
    cdxCDynamicWnd &m_engine;
    QBasicTimer m_timer;
    std::intptr_t m_id = 0;
};

} // namespace zelvar
