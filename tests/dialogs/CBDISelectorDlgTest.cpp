#include "zelvar/dialogs/CBDISelectorDlg.h"

#include "support/GuiTest.h"
#include "support/ScriptedDriver.h"
#include "zelvar/base/SettingsStore.h"
#include "zelvar/lists/CTreeCtrlItr.h"
#include "zelvar/lists/CZelListCtrl.h"
#include "zelvar/lists/CZelTreeCtrl.h"

#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>

#include <gtest/gtest.h>

namespace zelvar {
namespace {

using platform::GetDlgItem;
using test::ScriptedNode;

constexpr unsigned kImages = BDINode_Raster;

/// A dialog in a user's hands.
class Hands {
public:
    explicit Hands(QWidget &dialog)
        : window(dialog), tree(*GetDlgItem<CZelTreeCtrl>(dialog, 1001)), list(*GetDlgItem<CZelListCtrl>(dialog, 6004)),
          ok(*GetDlgItem<QPushButton>(dialog, 1)), cancel(*GetDlgItem<QPushButton>(dialog, 2)) {}

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
    CZelTreeCtrl &tree;
    CZelListCtrl &list;
    QPushButton &ok;
    QPushButton &cancel;
};

class Selector : public testing::Test {
protected:
    Selector() : m_driver(test::ScriptedDrivers::AddTree("SCRIPTED")) {
        SettingsStore::Instance().RemoveTree("Profile");
        m_driver.SetTree(
            "file",
            {.name = "file",
             .type = BDINode_Container | BDINode_Raster,
             .children = {
                 {.name = "zeta", .type = BDINode_Raster},
                 {.name = "alpha", .type = BDINode_Raster},
                 {.name = "layer", .type = BDINode_Thematic},
                 {.name = "group",
                  .type = BDINode_Container,
                  .children = {{.name = "inner",
                                .type = BDINode_Folder,
                                .children = {{.name = "deep", .type = BDINode_Raster}}},
                               {.name = "gamma", .type = BDINode_Raster}}},
                 {.name = "flat", .type = BDINode_Folder, .children = {{.name = "delta", .type = BDINode_Raster}}},
                 {.name = "broken", .children = {{.name = "x", .type = BDINode_Container}}, .broken = true}}});
    }
    ~Selector() override {
        EXPECT_EQ(m_driver.opens, m_driver.closes);
        EXPECT_EQ(m_driver.nodesMade, m_driver.nodesClosed);
        EXPECT_EQ(m_driver.finds, m_driver.findsClosed);
    }
    /// Runs the dialog with `act`; its result, and what it chose as "a, b".
    std::string Run(std::function<void(Hands)> const &act, bool multiSelect = true, unsigned mask = kImages) {
        CBDISelectorDlg dialog(&m_driver, m_path, mask, "Pick", multiSelect, nullptr);
        auto const done = test::OnNextDialog([&](QWidget &window) {
            QApplication::processEvents();
            act(Hands(window));
        });
        int const result = static_cast<int>(dialog.DoModal());
        EXPECT_TRUE(*done);
        std::string text = std::to_string(result) + ":";
        for (DString const &path : dialog.m_results)
            text += " " + path;
        return text;
    }

    test::ScriptedDrivers m_drivers;
    test::ScriptedTreeDriver &m_driver;
    char const *m_path = "file";
};

TEST_F(Selector, ItOpensOnTheRootWithItsFirstItemSelected) {
    EXPECT_EQ(Run([](Hands const &hands) {
                  EXPECT_EQ(hands.window.windowTitle(), "Pick");
                  EXPECT_EQ(hands.Tree(), "file[+ 0]");
                  EXPECT_EQ(hands.Rows(), "zeta* alpha");
                  EXPECT_EQ(hands.list.GetColumnWidth(0), 200);
                  EXPECT_EQ(hands.list.GetNumCol(), 1);
                  EXPECT_TRUE(hands.list.hasFocus());
                  test::Shot(hands.window, "selector-opened");
                  QTest::keyClick(&hands.list, Qt::Key_Return);
              }),
              "1: file/zeta");
}

TEST_F(Selector, ContainersAreExpandedOnceAndTheirFoldersOpenAndClose) {
    Run([this](Hands const &hands) {
        HTREEITEM const root = hands.tree.GetRootItem();
        hands.tree.Expand(root, TVE_EXPAND);
        QApplication::processEvents();
        // "flat" has no containers in it; "broken" cannot be asked.
        EXPECT_EQ(hands.Tree(), "file[- 1] group[+ 0] flat[0] broken[+ 0]");
        int const finds = m_driver.finds;
        hands.tree.Expand(root, TVE_COLLAPSE);
        EXPECT_EQ(hands.Tree(), "file[+ 0]");
        hands.tree.Expand(root, TVE_EXPAND);
        EXPECT_EQ(m_driver.finds, finds);
        HTREEITEM const group = hands.tree.GetChildItem(root);
        hands.tree.Expand(group, TVE_EXPAND);
        QApplication::processEvents();
        EXPECT_EQ(hands.Tree(), "file[- 1] group[- 1] inner[0] flat[0] broken[+ 0]");
        HTREEITEM const broken = hands.tree.FindItem("broken");
        hands.tree.SelectItem(broken);
        EXPECT_EQ(hands.Rows(), "");
        EXPECT_TRUE(hands.ok.isEnabled());
        EXPECT_FALSE(hands.tree.Expand(broken, TVE_EXPAND));
        EXPECT_FALSE(hands.tree.ItemHasChildren(broken));
        test::Shot(hands.window, "selector-expanded");
    });
}

TEST_F(Selector, TheListShowsWhatTheMaskNames) {
    Run([](Hands const &hands) { EXPECT_EQ(hands.Rows(), "layer*"); }, true, BDINode_Thematic);
    EXPECT_EQ(Run(
                  [](Hands const &hands) {
                      EXPECT_EQ(hands.Rows(), ""); // no tables in it
                      EXPECT_TRUE(hands.tree.hasFocus());
                      test::Click(&hands.ok);
                  },
                  true, BDINode_Table),
              "1: file");
}

TEST_F(Selector, SelectedRowsWinOverTheContainerAlsoWhenTheListIsSorted) {
    EXPECT_EQ(Run([](Hands const &hands) {
                  QHeaderView &header = *hands.list.GetHeaderCtrl();
                  QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(20, header.height() / 2));
                  EXPECT_EQ(hands.Rows(), "alpha zeta*");
                  hands.ClickRow(0);
                  hands.ClickRow(1, Qt::ControlModifier);
                  test::Click(&hands.ok);
              }),
              "1: file/alpha file/zeta");
    EXPECT_EQ(Run(
                  [](Hands const &hands) {
                      hands.ClickRow(0);
                      hands.ClickRow(1, Qt::ControlModifier);
                      test::Click(&hands.ok);
                  },
                  false),
              "1: file/alpha"); // one row only
    EXPECT_EQ(Run([](Hands const &hands) {
                  hands.list.SetSlct(0, false);
                  test::Click(&hands.ok);
              }),
              "1: file");
    EXPECT_EQ(Run([](Hands const &hands) { test::Click(&hands.cancel); }), "0:");
}

TEST_F(Selector, ADoubleClickTakesAWholeContainer) {
    EXPECT_EQ(Run([](Hands const &hands) { hands.DoubleClick(hands.tree.GetRootItem()); }), "1: file");
    int finds = 0;
    EXPECT_EQ(Run([&](Hands const &hands) {
                  hands.tree.Expand(hands.tree.GetRootItem(), TVE_EXPAND);
                  QApplication::processEvents();
                  HTREEITEM const group = hands.tree.FindItem("group");
                  QTest::mouseClick(hands.tree.viewport(), Qt::LeftButton, {}, hands.On(group));
                  EXPECT_EQ(hands.Rows(), "gamma");
                  finds = m_driver.finds;
                  hands.DoubleClick(group);
                  EXPECT_EQ(hands.tree.GetItemState(group, TVIS_EXPANDED), 0U);
              }),
              "1: file/group");
    EXPECT_EQ(m_driver.finds, finds); // it was not expanded on the way
    // Beside the items nothing is meant.
    EXPECT_EQ(Run([](Hands const &hands) {
                  QPoint const below(40, hands.tree.viewport()->height() - 3);
                  QTest::mouseDClick(hands.tree.viewport(), Qt::LeftButton, {}, below);
                  EXPECT_TRUE(hands.window.isVisible());
              }),
              "0:");
}

TEST_F(Selector, WithoutADriverOrATreeThereIsNothingToTake) {
    m_path = "no such file";
    EXPECT_EQ(Run([](Hands const &hands) {
                  EXPECT_EQ(hands.tree.GetCount(), 0U);
                  EXPECT_EQ(hands.Rows(), "");
                  EXPECT_FALSE(hands.ok.isEnabled());
                  test::Shot(hands.window, "selector-empty");
              }),
              "0:");
    CBDISelectorDlg dialog(nullptr, nullptr, kImages, nullptr, true, nullptr);
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), "BDI Selector Dialog");
    EXPECT_FALSE(Hands(dialog).ok.isEnabled());
}

TEST_F(Selector, ThousandsOfContainersAreAskedWhenTheyComeIntoSight) {
    ScriptedNode root{.name = "big"};
    for (int i = 0; i < 5000; ++i) {
        ScriptedNode member{.name = "member " + std::to_string(i)};
        if (i % 2 == 0)
            member.children.push_back({.name = "child", .type = BDINode_Container});
        root.children.push_back(member);
    }
    m_driver.SetTree("big", root);
    m_path = "big";
    Run([this](Hands const &hands) {
        int const finds = m_driver.finds;
        HTREEITEM const top = hands.tree.GetRootItem();
        hands.tree.Expand(top, TVE_EXPAND);
        QApplication::processEvents();
        EXPECT_EQ(hands.tree.GetCount(), 5001U);
        int const rows =
            hands.tree.viewport()->height() / (hands.On(hands.tree.GetChildItem(top)).y() - hands.On(top).y());
        EXPECT_LE(m_driver.finds - finds, rows + 2);
        EXPECT_FALSE(hands.tree.ItemHasChildren(hands.tree.FindItem("member 1")));
        EXPECT_TRUE(hands.tree.ItemHasChildren(hands.tree.FindItem("member 2")));
        hands.tree.verticalScrollBar()->setValue(hands.tree.verticalScrollBar()->maximum());
        QApplication::processEvents();
        EXPECT_FALSE(hands.tree.ItemHasChildren(hands.tree.FindItem("member 4999")));
        EXPECT_LE(m_driver.finds - finds, 2 * rows + 4);
    });
}

TEST_F(Selector, LongNamesAreShownWhole) {
    m_driver.SetTree("long", {.name = "long", .children = {{.name = std::string(60, 'm'), .type = BDINode_Raster}}});
    m_path = "long";
    Run([](Hands const &hands) { EXPECT_GT(hands.list.GetColumnWidth(0), 300); });
}

TEST_F(Selector, TheTreeGrowsWithTheDialogAndTheListMoves) {
    CBDISelectorDlg dialog(&m_driver, "file", kImages, "", true, nullptr);
    dialog.show();
    Hands const hands(dialog);
    QRect const tree = hands.tree.geometry();
    QRect const list = hands.list.geometry();
    QRect const ok = hands.ok.geometry();
    dialog.resize(dialog.width() + 100, dialog.height() + 50);
    EXPECT_EQ(hands.tree.geometry(), tree.adjusted(0, 0, 100, 50));
    EXPECT_EQ(hands.list.geometry(), list.adjusted(100, 0, 100, 50));
    EXPECT_EQ(hands.ok.geometry(), ok.translated(100, 50));
    test::Shot(dialog, "selector-wide");
}

} // namespace
} // namespace zelvar
