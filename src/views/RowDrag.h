#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QBasicTimer>
#include <QtCore/QObject>
#include <QtCore/QPoint>

#include <functional>

class QMouseEvent;
class QWidget;

namespace zelvar {

class ReportView;

/// Drags a row of a list to another place among rows like it. A line shows where it would go; Escape, and
/// letting go outside, leave everything as it is. User-interface thread.
class RowDrag : public QObject {
public:
    struct Rule {
        std::function<bool(int row)> isMovable; ///< whether it is one of these
        /// What stands there: rows may be listed anew meanwhile.
        std::function<DString(int row)> nameOf;
        /// The row goes before the row `beside`, or behind it.
        std::function<void(int row, int beside, bool behind)> drop;
    };
    /// Lives at most as long as the list.
    RowDrag(ReportView &list, Rule rule);
    ~RowDrag() override;

    [[nodiscard]] bool IsDragging() const { return m_isDragging; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    struct Slot {
        int beside = -1; ///< row; -1 for no place
        bool behind = false;
        int y = 0; ///< of the mark, pixels of the viewport
    };
    bool OnMouse(QMouseEvent const &event);
    void Begin();
    void End();
    void Follow();
    [[nodiscard]] Slot SlotAt(QPoint point) const;

    ReportView &m_list;
    Rule m_rule;
    QWidget *m_mark; ///< a child of the viewport
    int m_row = -1;  ///< that was pressed; -1 for none
    DString m_name;  ///< of what was there
    QPoint m_pressedAt;
    QPoint m_point; ///< of the pointer now, in the viewport
    bool m_isDragging = false;
    QBasicTimer m_scrolling;
};

} // namespace zelvar
