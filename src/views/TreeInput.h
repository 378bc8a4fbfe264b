#pragma once

#include "zelvar/views/TreeTypes.h"

#include <QtCore/QBasicTimer>

#include <optional>

class QKeyEvent;
class QMouseEvent;

namespace zelvar {

class TreeView;

/// What the mouse and the keyboard do in a tree view. Remembers what spans several events: a press that may become a
/// drag, and a click that opens the edit of a label unless a second one follows. What happened is told by the view.
class TreeInput {
public:
    explicit TreeInput(TreeView &tree) : m_tree(tree) {}

    /// The `MK_...` of a message of the mouse, kept as those of the last one.
    unsigned NoteFlags(QMouseEvent const &event);
    [[nodiscard]] unsigned Flags() const { return m_flags; }

    void LeftDown(Point point);
    void LeftUp();
    void RightDown(Point point);
    void RightUp() { m_pressed = nullptr; }
    void DoubleClick() { m_editSoon = nullptr; }

    struct Drag {
        HTREEITEM item = nullptr;
        Point from{};
        bool left = false; ///< by the left button
    };
    /// The pointer has moved: a drag once it has gone far enough, with the button still down.
    std::optional<Drag> Move(unsigned flags, Point point);

    bool TimerFired(int timerId);     ///< false for a timer of somebody else
    bool Key(QKeyEvent const &event); ///< false for a key that is left to the toolkit

    void Forget(TreeNode const *item); ///< it is about to go
    void ForgetAll() { m_pressed = m_editSoon = nullptr; }

private:
    void Press(HTREEITEM item, Point point, unsigned button, unsigned part);
    void StepInwards(HTREEITEM from);
    void StepOutwards(HTREEITEM from);

    TreeView &m_tree;
    HTREEITEM m_pressed = nullptr; ///< where a drag may begin
    Point m_pressedAt{};
    unsigned m_pressedButton = 0; ///< `MK_LBUTTON` or `MK_RBUTTON`
    unsigned m_flags = 0;
    HTREEITEM m_editSoon = nullptr; ///< clicked while selected: its edit opens unless this becomes a double click
    QBasicTimer m_editTimer;
};

} // namespace zelvar
