#pragma once

#include "support/GuiTest.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/CZelTreeCtrl.h"
#include "zelvar/platform/ui/ControlId.h"

namespace zelvar::test {

/// The selector of nodes in a user's hands.
struct SelectorHands {
    explicit SelectorHands(QWidget &dialog) : window(dialog) {}

    /// "root[+ 0] a[- 0]": the items that are shown, "+" for an expander that would expand and "-" for one that would
    /// collapse, and their images.
    [[nodiscard]] std::string Tree() const {
        std::string text;
        for (HTREEITEM item = tree.GetRootItem(); item != nullptr; item = tree.GetNextVisibleItem(item)) {
            int image = -1;
            int selected = -1;
            tree.GetItemImage(item, image, selected);
            EXPECT_EQ(image, selected);
            char const *const expander = !tree.ItemHasChildren(item)                   ? ""
                                         : tree.GetItemState(item, TVIS_EXPANDED) != 0 ? "- "
                                                                                       : "+ ";
            text += (text.empty() ? "" : " ") + tree.GetItemText(item) + "[" + expander + std::to_string(image) + "]";
        }
        return text;
    }
    [[nodiscard]] std::string Rows() const {
        std::string text;
        for (int row = 0; row < list.GetNumRow(); ++row)
            text += (row == 0 ? "" : " ") + list.GetItemText(row, 0) + (list.GetSlct(row) ? "*" : "");
        return text;
    }
    HTREEITEM Select(DString const &name) const {
        HTREEITEM const item = tree.FindItem(name);
        EXPECT_TRUE(item != nullptr && tree.SelectItem(item)) << Tree();
        return item;
    }
    HTREEITEM Expand(DString const &name) const {
        HTREEITEM const item = tree.FindItem(name);
        EXPECT_TRUE(item != nullptr && tree.Expand(item, TVE_EXPAND)) << Tree();
        QApplication::processEvents();
        return item;
    }
    [[nodiscard]] QPoint On(HTREEITEM item) const {
        Rect label;
        EXPECT_TRUE(tree.GetItemRect(item, label, true));
        return {label.left + 3, (label.top + label.bottom) / 2};
    }
    void ClickRow(int row, Qt::KeyboardModifiers modifiers = {}) const {
        Rect const place = list.GetSubItemRect(row, 0, LVIR_LABEL);
        QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers,
                          QPoint(place.left + 5, (place.top + place.bottom) / 2));
    }
    void DoubleClick(HTREEITEM item) const {
        QPoint const at = On(item);
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, at);
    }

    QWidget &window;
    CZelTreeCtrl &tree = *platform::GetDlgItem<CZelTreeCtrl>(window, 1001);
    CZelListCtrl &list = *platform::GetDlgItem<CZelListCtrl>(window, 6004);
    QPushButton &ok = *platform::GetDlgItem<QPushButton>(window, 1);
    QPushButton &cancel = *platform::GetDlgItem<QPushButton>(window, 2);
};

/// Runs the selector while `act` works with it; its result, and what it chose, as "1: a b".
template <class Selector>
std::string RunSelector(Selector &dialog, std::function<void(SelectorHands const &)> const &act) {
    auto const done = OnNextDialog([&](QWidget &window) {
        QApplication::processEvents();
        act(SelectorHands(window));
    });
    std::string text = std::to_string(dialog.DoModal()) + ":";
    EXPECT_TRUE(*done);
    for (DString const &path : dialog.m_results)
        text += " " + path;
    return text;
}

} // namespace zelvar::test
