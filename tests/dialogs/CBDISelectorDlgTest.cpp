#include "zelvar/dialogs/CBDISelectorDlg.h"

#include "support/ScriptedDriver.h"
#include "support/SelectorHands.h"
#include "zelvar/store/SettingsStore.h"

#include <QtWidgets/QHeaderView>

namespace zelvar::test {
namespace {

struct Selector : testing::Test {
    Selector() : m_driver(ScriptedDrivers::AddTree("SCRIPTED")) {
        SettingsStore::Instance().RemoveTree("Profile");
        ScriptedNode const deep{.name = "deep", .type = BDINode_Raster};
        ScriptedNode const inner{.name = "inner", .type = BDINode_Folder, .children = {deep}};
        ScriptedNode root{.name = "file", .type = BDINode_Container | BDINode_Raster};
        root.children = {{.name = "zeta", .type = BDINode_Raster},
                         {.name = "alpha", .type = BDINode_Raster},
                         {.name = "layer", .type = BDINode_Thematic},
                         {.name = "group", .children = {inner, {.name = "gamma", .type = BDINode_Raster}}},
                         {.name = "flat", .type = BDINode_Folder, .children = {deep}},
                         {.name = "broken", .children = {{.name = "x"}}, .broken = true}};
        m_driver.SetTree("file", root);
    }
    ~Selector() override {
        EXPECT_TRUE(m_driver.OpenTrees() == 0 && m_driver.OpenNodes() == 0 && m_driver.OpenFinds() == 0);
    }
    /// Runs the dialog with `act`; its result, and what it chose, as "1: a b".
    std::string Run(std::function<void(SelectorHands const &)> const &act, bool multiSelect = true,
                    unsigned mask = BDINode_Raster) {
        CBDISelectorDlg dialog(&m_driver, m_path, mask, "Pick", multiSelect, nullptr);
        return RunSelector(dialog, act);
    }
    static void ClickFirstTwo(SelectorHands const &hands) {
        hands.ClickRow(0);
        hands.ClickRow(1, Qt::ControlModifier);
        Click(&hands.ok);
    }

    ScriptedDrivers m_drivers;
    ScriptedTreeDriver &m_driver;
    char const *m_path = "file";
};

TEST_F(Selector, ItOpensOnTheRootWithItsFirstItemSelected) {
    auto const act = [](SelectorHands const &hands) {
        EXPECT_EQ(hands.window.windowTitle(), "Pick");
        EXPECT_EQ(hands.Tree(), "file[+ 0]");
        EXPECT_EQ(hands.Rows(), "zeta* alpha");
        EXPECT_EQ(hands.list.GetColumnWidth(0), 200);
        EXPECT_EQ(hands.list.GetNumCol(), 1);
        EXPECT_TRUE(hands.list.hasFocus());
        Shot(hands.window, "selector-opened");
        QTest::keyClick(&hands.list, Qt::Key_Return);
    };
    EXPECT_EQ(Run(act), "1: file/zeta");
}

TEST_F(Selector, ContainersAreExpandedOnceAndTheirFoldersOpenAndClose) {
    Run([this](SelectorHands const &hands) {
        hands.Expand("file");
        // "flat" has no containers in it; "broken" cannot be asked.
        EXPECT_EQ(hands.Tree(), "file[- 1] group[+ 0] flat[0] broken[+ 0]");
        int const finds = m_driver.finds;
        hands.tree.Expand(hands.tree.GetRootItem(), TVE_COLLAPSE);
        EXPECT_EQ(hands.Tree(), "file[+ 0]");
        hands.Expand("file");
        EXPECT_EQ(m_driver.finds, finds);
        hands.Expand("group");
        EXPECT_EQ(hands.Tree(), "file[- 1] group[- 1] inner[0] flat[0] broken[+ 0]");
        TreeNode *const broken = hands.Select("broken");
        EXPECT_EQ(hands.Rows(), "");
        EXPECT_TRUE(hands.ok.isEnabled());
        EXPECT_FALSE(hands.tree.Expand(broken, TVE_EXPAND) || hands.tree.ItemHasChildren(broken));
        Shot(hands.window, "selector-expanded");
    });
}

TEST_F(Selector, WithoutRowsOKTakesTheRoot) {
    auto const act = [](SelectorHands const &hands) {
        EXPECT_EQ(hands.Rows(), "");
        EXPECT_TRUE(hands.tree.hasFocus());
        Click(&hands.ok);
    };
    EXPECT_EQ(Run(act, true, BDINode_Table), "1: file");
}

TEST_F(Selector, SelectedRowsWinOverTheContainerAlsoWhenTheListIsSorted) {
    auto const sortFirst = [](SelectorHands const &hands) {
        QHeaderView &header = *hands.list.GetHeaderCtrl();
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(20, header.height() / 2));
        EXPECT_EQ(hands.Rows(), "alpha zeta*");
        ClickFirstTwo(hands);
    };
    EXPECT_EQ(Run(sortFirst), "1: file/alpha file/zeta");
    EXPECT_EQ(Run(ClickFirstTwo, false), "1: file/alpha") << "one row only";
    auto const selectNone = [](SelectorHands const &hands) {
        hands.list.SetSlct(0, false);
        Click(&hands.ok);
    };
    EXPECT_EQ(Run(selectNone), "1: file");
    EXPECT_EQ(Run([](SelectorHands const &hands) { Click(&hands.cancel); }), "0:");
}

TEST_F(Selector, ADoubleClickTakesARowOrAWholeContainer) {
    EXPECT_EQ(Run([](SelectorHands const &hands) {
                  Rect const place = hands.list.GetSubItemRect(1, 0, LVIR_LABEL);
                  QTest::mouseDClick(hands.list.viewport(), Qt::LeftButton, {}, QPoint(place.left + 5, place.top + 5));
              }),
              "1: file/alpha");
    EXPECT_EQ(Run([](SelectorHands const &hands) { hands.DoubleClick(hands.tree.GetRootItem()); }), "1: file");
    auto const group = [&](SelectorHands const &hands) {
        hands.Expand("file");
        TreeNode *const item = hands.tree.FindItem("group");
        QTest::mouseClick(hands.tree.viewport(), Qt::LeftButton, {}, hands.On(item));
        EXPECT_EQ(hands.Rows(), "gamma");
        int const finds = m_driver.finds;
        hands.DoubleClick(item);
        EXPECT_EQ(hands.tree.GetItemState(item, TVIS_EXPANDED), 0U);
        EXPECT_EQ(m_driver.finds, finds) << "it was not expanded on the way";
    };
    EXPECT_EQ(Run(group), "1: file/group");
    auto const besideTheItems = [](SelectorHands const &hands) {
        QPoint const below(40, hands.tree.viewport()->height() - 3);
        QTest::mouseDClick(hands.tree.viewport(), Qt::LeftButton, {}, below);
        EXPECT_TRUE(hands.window.isVisible());
    };
    EXPECT_EQ(Run(besideTheItems), "0:");
}

TEST_F(Selector, WithoutADriverOrATreeThereIsNothingToTake) {
    m_path = "no such file";
    auto const act = [](SelectorHands const &hands) {
        EXPECT_EQ(hands.tree.GetCount(), 0U);
        EXPECT_EQ(hands.Rows(), "");
        EXPECT_FALSE(hands.ok.isEnabled());
        Shot(hands.window, "selector-empty");
    };
    EXPECT_EQ(Run(act), "0:");
    CBDISelectorDlg dialog(nullptr, nullptr, BDINode_Raster, nullptr, true, nullptr);
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), "BDI Selector Dialog");
    EXPECT_FALSE(SelectorHands(dialog).ok.isEnabled());
}

TEST_F(Selector, ThousandsOfContainersAreAskedWhenTheyComeIntoSight) {
    ScriptedNode root{.name = "big"};
    for (int i = 0; i < 5000; ++i) {
        ScriptedNode member{.name = "a long name of member " + std::to_string(i)};
        if (i % 2 == 0)
            member.children.push_back({.name = "child", .type = BDINode_Container});
        root.children.push_back(member);
    }
    m_driver.SetTree("big", root);
    m_path = "big";
    Run([this](SelectorHands const &hands) {
        int const finds = m_driver.finds;
        TreeNode *const top = hands.Expand("big");
        EXPECT_EQ(hands.tree.GetCount(), 5001U);
        int const rows =
            hands.tree.viewport()->height() / (hands.On(hands.tree.GetChildItem(top)).y() - hands.On(top).y());
        EXPECT_LE(m_driver.finds - finds, rows + 2);
        EXPECT_FALSE(hands.tree.ItemHasChildren(hands.tree.FindItem("a long name of member 1")));
        EXPECT_TRUE(hands.tree.ItemHasChildren(hands.tree.FindItem("a long name of member 2")));
        hands.tree.verticalScrollBar()->setValue(hands.tree.verticalScrollBar()->maximum());
        QApplication::processEvents();
        EXPECT_FALSE(hands.tree.ItemHasChildren(hands.tree.FindItem("a long name of member 4999")));
        EXPECT_LE(m_driver.finds - finds, 2 * rows + 4);
    });
}

TEST_F(Selector, TheTreeGrowsWithTheDialogAndTheListMoves) {
    CBDISelectorDlg dialog(&m_driver, "file", BDINode_Raster, "", true, nullptr);
    dialog.show();
    SelectorHands const hands(dialog);
    QRect const tree = hands.tree.geometry();
    QRect const list = hands.list.geometry();
    QRect const ok = hands.ok.geometry();
    dialog.resize(dialog.width() + 100, dialog.height() + 50);
    EXPECT_EQ(hands.tree.geometry(), tree.adjusted(0, 0, 100, 50));
    EXPECT_EQ(hands.list.geometry(), list.adjusted(100, 0, 100, 50));
    EXPECT_EQ(hands.ok.geometry(), ok.translated(100, 50));
    Shot(dialog, "selector-wide");
}

} // namespace
} // namespace zelvar::test
