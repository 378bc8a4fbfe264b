#include "zelvar/views/TreeInput.h"

#include "zelvar/views/TreeView.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QApplication>

#include <cstdlib>
#include <utility>

namespace zelvar {

unsigned TreeInput::NoteFlags(QMouseEvent const &event) {
    m_flags = 0;
    m_flags |= (event.buttons() & Qt::LeftButton) != 0 ? MK_LBUTTON : 0U;
    m_flags |= (event.buttons() & Qt::RightButton) != 0 ? MK_RBUTTON : 0U;
    m_flags |= (event.buttons() & Qt::MiddleButton) != 0 ? MK_MBUTTON : 0U;
    m_flags |= (event.modifiers() & Qt::ShiftModifier) != 0 ? MK_SHIFT : 0U;
    m_flags |= (event.modifiers() & Qt::ControlModifier) != 0 ? MK_CONTROL : 0U;
    return m_flags;
}

void TreeInput::Press(HTREEITEM item, Point point, unsigned button, unsigned part) {
    m_pressed = (part & TVHT_ONITEM) != 0 ? item : nullptr;
    m_pressedAt = point;
    m_pressedButton = button;
}

void TreeInput::LeftDown(Point point) {
    unsigned part = 0;
    TreeNode *const item = m_tree.HitTest(point, &part);
    Press(item, point, MK_LBUTTON, part);
    m_editSoon = nullptr;
    if ((part & TVHT_ONITEMBUTTON) != 0) {
        m_tree.Expand(item, TVE_TOGGLE);
        return;
    }
    if (item == nullptr)
        return;
    bool const again = item == m_tree.GetSelectedItem() && part == TVHT_ONITEMLABEL && m_tree.hasFocus();
    if (again && m_tree.CanEditLabels())
        m_editSoon = item;
    m_tree.SelectItem(item);
}

void TreeInput::LeftUp() {
    m_pressed = nullptr;
    if (m_editSoon != nullptr && !m_editTimer.isActive())
        m_editTimer.start(QApplication::doubleClickInterval(), &m_tree);
}

void TreeInput::RightDown(Point point) {
    unsigned part = 0;
    TreeNode *const item = m_tree.HitTest(point, &part);
    Press(item, point, MK_RBUTTON, part);
}

std::optional<TreeInput::Drag> TreeInput::Move(unsigned flags, Point point) {
    bool const held = (flags & m_pressedButton) != 0;
    int const distance = std::abs(point.x - m_pressedAt.x) + std::abs(point.y - m_pressedAt.y);
    if (m_pressed == nullptr || !held || distance < QApplication::startDragDistance())
        return std::nullopt;
    m_editSoon = nullptr;
    return Drag{std::exchange(m_pressed, nullptr), m_pressedAt, m_pressedButton == MK_LBUTTON};
}

bool TreeInput::TimerFired(int timerId) {
    if (timerId != m_editTimer.timerId())
        return false;
    m_editTimer.stop();
    if (TreeNode *const item = std::exchange(m_editSoon, nullptr); item != nullptr && item == m_tree.GetSelectedItem())
        m_tree.EditLabel(item);
    return true;
}

void TreeInput::Forget(TreeNode const *item) {
    if (m_pressed == item)
        m_pressed = nullptr;
    if (m_editSoon == item)
        m_editSoon = nullptr;
}

void TreeInput::StepInwards(HTREEITEM from) {
    if (from->IsExpanded() && from->FirstChild() != nullptr)
        m_tree.SelectItem(from->FirstChild());
    else
        m_tree.Expand(from, TVE_EXPAND);
}

void TreeInput::StepOutwards(HTREEITEM from) {
    if (from->IsExpanded())
        m_tree.Expand(from, TVE_COLLAPSE);
    else if (TreeNode *const parent = m_tree.GetParentItem(from))
        m_tree.SelectItem(parent);
}

bool TreeInput::Key(QKeyEvent const &event) {
    TreeNode *const selected = m_tree.GetSelectedItem();
    if (selected == nullptr)
        return false;
    bool const plain = (event.modifiers() & ~Qt::KeypadModifier) == 0;
    switch (event.key()) {
    case Qt::Key_F2:
        if (plain && m_tree.CanEditLabels())
            m_tree.EditLabel(selected);
        return true;
    case Qt::Key_F10: // the key for menus comes as an event of its own, this one does not
        if (event.modifiers() == Qt::ShiftModifier)
            m_tree.TellMenuKey();
        return event.modifiers() == Qt::ShiftModifier;
    case Qt::Key_Plus:
        m_tree.Expand(selected, TVE_EXPAND);
        return true;
    case Qt::Key_Minus:
        m_tree.Expand(selected, TVE_COLLAPSE);
        return true;
    case Qt::Key_Asterisk:
        m_tree.ExpandAll(selected);
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (plain && (event.key() == Qt::Key_Left) == m_tree.isRightToLeft())
            StepInwards(selected);
        else if (plain)
            StepOutwards(selected);
        return plain;
    default:
        return false;
    }
}

} // namespace zelvar
