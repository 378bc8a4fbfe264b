#pragma once

#include "zelvar/base/Geometry.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

class QKeyEvent;
class QMouseEvent;

namespace zelvar {

class ReportView;

/// What the mouse and the keyboard do in a report view. Makes presses, steps and typed words of events and remembers
/// what spans several of them; what happened is told by the view.
class ReportInput {
public:
    explicit ReportInput(ReportView &view) : m_view(view) {}

    /// A button goes down, beside the rows too, where the selection stays. False for a button that means nothing.
    bool Press(QMouseEvent const &event);
    /// A button goes up. True if that makes a click of what went down here.
    bool Release(Point point);
    /// Keys that were down when the button of a click went down.
    [[nodiscard]] Qt::KeyboardModifiers ClickModifiers() const { return m_clickModifiers; }

    /// False for a key that is none of the list's own; it may type, see `TypesText`.
    bool Key(QKeyEvent const &event);
    /// Goes to the next row that begins with what was typed in quick succession, in stored lists.
    void Type(QChar character);
    /// Where a context menu asked for by the keyboard opens, pixels of the viewport.
    [[nodiscard]] Point MenuPlace() const;

private:
    void MoveTo(int position, Qt::KeyboardModifiers modifiers);
    bool MoveFocus(QKeyEvent const &event);
    bool ScrollSideways(int key);

    ReportView &m_view;
    bool m_pressed = false; ///< a button went down here; its release makes the click
    Qt::KeyboardModifiers m_clickModifiers;
    QString m_typed; ///< characters of a running search
    QElapsedTimer m_typedAt;
};

} // namespace zelvar
