#pragma once

#include "support/GuiTest.h"
#include "support/Teller.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/TreeView.h"

namespace zelvar::test {

/// The label of an item, "-" for none.
inline DString TextOf(HTREEITEM item) { return item == nullptr ? "-" : item->text; }

/// A tree view on a screen, under a user's hands.
class TreeStage {
public:
    explicit TreeStage(TreeView &tree, int width = 240, int height = 200) : m_tree(tree) {
        tree.resize(width, height);
        tree.show();
        tree.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(tree.window()));
        tree.setFocus();
    }

    [[nodiscard]] Rect Label(HTREEITEM item) const {
        Rect rect;
        EXPECT_TRUE(m_tree.GetItemRect(item, rect, true)) << "the item is not shown";
        return rect;
    }
    [[nodiscard]] QPoint On(HTREEITEM item) const { return platform::ToQRect(Label(item)).center(); }
    /// A point on the expander of an item.
    [[nodiscard]] QPoint OnButton(HTREEITEM item) const {
        Rect const label = Label(item);
        for (int x = label.left; x >= 0; --x) {
            unsigned flags = 0;
            if (m_tree.HitTest(Point{x, (label.top + label.bottom) / 2}, &flags) == item && flags == TVHT_ONITEMBUTTON)
                return {x - 4, (label.top + label.bottom) / 2};
        }
        ADD_FAILURE() << "no expander";
        return {};
    }

    void Press(QPoint at, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mousePress(m_tree.viewport(), button, {}, at);
    }
    void Release(QPoint at, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseRelease(m_tree.viewport(), button, {}, at);
    }
    void Click(QPoint at, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(m_tree.viewport(), button, {}, at);
    }
    void DoubleClick(QPoint at) {
        Click(at);
        QTest::mouseDClick(m_tree.viewport(), Qt::LeftButton, {}, at);
    }
    void Move(QPoint at, Qt::MouseButtons held) {
        QMouseEvent move(QEvent::MouseMove, at, m_tree.viewport()->mapToGlobal(at), Qt::NoButton, held, {});
        QApplication::sendEvent(m_tree.viewport(), &move);
    }
    void Key(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&m_tree, static_cast<Qt::Key>(key), modifiers);
    }
    void Type(char const *text) { QTest::keyClicks(&m_tree, QString::fromUtf8(text)); }

private:
    TreeView &m_tree;
};

} // namespace zelvar::test
