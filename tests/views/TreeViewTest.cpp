#include "zelvar/views/TreeView.h"

#include "support/TreeStage.h"

#include <QtGui/QAction>
#include <QtGui/QContextMenuEvent>
#include <QtTest/QAbstractItemModelTester>

namespace zelvar {
namespace {

using test::TextOf;
using test::TreeStage;

/// A view that writes down what it is told.
class TellingTree : public TreeView, public test::Teller {
public:
    TellingTree() {
        connect(this, &TreeView::ItemExpanding, this, [this](TreeExpanding *expanding) {
            Tell((expanding->action == TVE_EXPAND ? "expanding " : "collapsing ") + expanding->item->text);
            expanding->veto = veto;
            if (fill && expanding->item->FirstChild() == nullptr)
                InsertItem("filled", expanding->item);
        });
        connect(this, &TreeView::ItemExpanded, this, [this](HTREEITEM item, unsigned action) {
            Tell((action == TVE_EXPAND ? "expanded " : "collapsed ") + item->text);
        });
        connect(this, &TreeView::SelChanged, this,
                [this](TreeNode *former, TreeNode *now) { Tell(TextOf(former) + ">" + TextOf(now)); });
    }
    bool veto = false;
    bool fill = false;

protected:
    void OnDeleteItem(HTREEITEM item) override { Tell("-" + item->text); }
    bool OnRclick(Point point) override { return Tell("menu " + TextOf(HitTest(point))), true; }
};

struct Family {
    explicit Family(TreeView &tree)
        : parent(tree.InsertItem("parent")), first(tree.InsertItem("first", parent)),
          second(tree.InsertItem("second", parent)), other(tree.InsertItem("other")) {}
    HTREEITEM parent;
    HTREEITEM first;
    HTREEITEM second;
    HTREEITEM other;
};

TEST(TreeView, ItemsGoWhereTheyAreTold) {
    TreeView tree;
    // Ends the program where rows, parents or what is kept of them do not agree.
    QAbstractItemModelTester const agree(tree.model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    Family const family(tree);
    tree.SelectItem(family.first);
    TreeNode *const head = tree.InsertItem("head", family.parent, TVI_FIRST);
    TreeNode *const middle = tree.InsertItem("middle", family.parent, family.first);
    TreeNode *const late = tree.InsertItem("gamma", family.other);
    TreeNode *const sorted = tree.InsertItem("Beta", family.other, TVI_SORT);
    TreeNode *const strange = tree.InsertItem(TVIF_TEXT | TVIF_STATE, "strange", 0, 0, TVIS_BOLD | TVIS_CUT, TVIS_BOLD,
                                              0, family.parent, family.other); // no sibling: at the end
    EXPECT_EQ(tree.GetItemState(strange, ~0U), unsigned{TVIS_BOLD});
    EXPECT_EQ(tree.GetChildItem(family.parent), head);
    EXPECT_EQ(tree.GetNextSiblingItem(family.first), middle);
    EXPECT_EQ(tree.GetPrevSiblingItem(strange), family.second);
    EXPECT_EQ(tree.GetNextSiblingItem(sorted), late);
    EXPECT_TRUE(tree.GetChildItem(TVI_ROOT) == family.parent && tree.GetParentItem(family.parent) == nullptr);
    TVINSERTSTRUCT const told{.hParent = sorted, .item = {.mask = TVIF_CHILDREN, .cChildren = 1, .lParam = 7}};
    TreeNode *const lazy = tree.InsertItem(&told);
    EXPECT_TRUE(tree.ItemHasChildren(lazy) && tree.GetItemData(lazy) == 0);
    for (unsigned const mask : {TVIF_PARAM | TVIF_IMAGE, TVIF_STATE | TVIF_SELECTEDIMAGE}) { // what it names is taken
        TreeNode *const item = tree.InsertItem(mask, "x", 3, 4, TVIS_BOLD, TVIS_BOLD, 7, sorted, TVI_LAST);
        EXPECT_TRUE((mask & TVIF_PARAM) != 0 ? item->data == 7 && item->image == 3
                                             : item->data == 0 && item->image != 3);
        EXPECT_EQ(item->state != 0 && item->selectedImage == 4, (mask & TVIF_STATE) != 0);
    }
    EXPECT_EQ(tree.GetCount(), 12U);
    for (unsigned const bit : {TVIS_EXPANDED, TVIS_CUT, TVIS_BOLD, TVIS_DROPHILITED, TVIS_SELECTED})
        for (unsigned const state : {bit, 0U}) {
            unsigned const others = tree.GetItemState(family.parent, ~bit);
            EXPECT_TRUE(tree.SetItemState(family.parent, state | ~bit, bit) && tree.SetItemState(lazy, 0, bit));
            EXPECT_EQ(tree.GetItemState(family.parent, ~0U), state | others) << bit;
        }
    tree.SelectItem(family.first);
    tree.SortChildren(family.parent);
    EXPECT_TRUE(tree.GetSelectedItem() == family.first && tree.currentIndex().row() == 0) << "it was second";
    EXPECT_EQ(tree.GetItemText(tree.GetChildItem(family.parent)), "first");
    EXPECT_EQ(tree.GetNextItem(nullptr, 77), nullptr);
    tree.SetItemText(late, "alpha");
    tree.SortChildren(family.other);
    EXPECT_EQ(tree.GetChildItem(family.other), late) << "it was behind the other";
    EXPECT_TRUE(tree.SelectItem(nullptr) && tree.GetSelectedItem() == nullptr);
}

TEST(TreeView, AnItemMarkedAsParentShowsItsExpanderAndIsFilledWhenItIsExpanded) {
    TellingTree tree;
    TreeStage stage(tree);
    TreeNode *const item = tree.InsertItem("lazy");
    EXPECT_FALSE(tree.Expand(item, TVE_EXPAND));
    tree.SetItemChildren(item, true);
    stage.Click(stage.OnButton(item));
    EXPECT_EQ(tree.Take(), "expanding lazy");
    EXPECT_EQ(tree.GetItemState(item, TVIS_EXPANDED), 0U); // nobody filled it
    tree.fill = true;
    stage.Click(stage.OnButton(item));
    EXPECT_EQ(tree.Take(), "expanding lazy, expanded lazy");
    EXPECT_TRUE(tree.Expand(item, TVE_EXPAND));
    EXPECT_EQ(tree.Take(), "") << "it is expanded already";
    EXPECT_EQ(tree.GetItemState(item, TVIS_EXPANDED | TVIS_EXPANDEDONCE), TVIS_EXPANDED | TVIS_EXPANDEDONCE);
    EXPECT_EQ(stage.Label(tree.GetChildItem(item)).top, stage.Label(item).bottom);
    tree.veto = true;
    stage.Click(stage.OnButton(item));
    EXPECT_EQ(tree.Take(), "collapsing lazy");
    EXPECT_NE(tree.GetItemState(item, TVIS_EXPANDED), 0U);
    test::Shot(tree, "tree-view-expanded");
    tree.collapse(tree.model()->index(0, 0)); // as the toolkit does for a screen reader
    EXPECT_EQ(tree.GetItemState(item, TVIS_EXPANDED | TVIS_EXPANDEDONCE), unsigned{TVIS_EXPANDEDONCE});
    tree.veto = false;
    for (char const *const told : {"expanding lazy, expanded lazy", "collapsing lazy, collapsed lazy"}) {
        EXPECT_TRUE(tree.Expand(item, TVE_TOGGLE));
        EXPECT_EQ(tree.Take(), told);
    }
    EXPECT_TRUE(tree.Expand(item, TVE_COLLAPSE | TVE_COLLAPSERESET)); // collapsed as it is
    EXPECT_EQ(tree.Take(), "collapsing lazy, -filled, collapsed lazy");
    EXPECT_EQ(tree.GetItemState(item, TVIS_EXPANDEDONCE), 0U);
}

TEST(TreeView, CollapsingOverTheSelectionSelectsTheCollapsedItemAndDeletingItItsNeighbour) {
    TellingTree tree;
    TreeStage const stage(tree);
    Family const family(tree);
    tree.SelectItem(family.second);
    EXPECT_EQ(tree.Take(), "expanding parent, expanded parent, ->second");
    tree.Expand(family.parent, TVE_COLLAPSE);
    EXPECT_EQ(tree.Take(), "collapsing parent, second>parent, collapsed parent");
    tree.SelectItem(family.first);
    tree.Take();
    int const top = stage.Label(family.first).top;
    tree.DeleteItem(family.first);
    EXPECT_EQ(tree.Take(), "-first, first>second");
    EXPECT_EQ(stage.Label(family.second).top, top) << "the rest moves up";
    tree.DeleteItem(family.second);
    EXPECT_EQ(tree.Take(), "-second, second>parent");
    EXPECT_EQ(tree.GetItemState(family.parent, TVIS_EXPANDED), 0U);
    TreeNode *const again = tree.InsertItem("again", family.parent);
    tree.SelectItem(again);
    tree.Take();
    tree.DeleteItem(family.parent); // with the selected one below it
    EXPECT_EQ(tree.Take(), "-parent, -again, again>other");
    tree.DeleteAllItems();
    EXPECT_EQ(tree.Take(), "other>-, -other");
    EXPECT_TRUE(tree.GetCount() == 0 && tree.GetSelectedItem() == nullptr);
}

TEST(TreeView, HitTestTellsThePartsOfAnItem) {
    TreeView tree;
    ImageList images;
    images.Add({.name = "folder", .fallback = "folder"});
    tree.SetImageList(&images, TVSIL_NORMAL);
    TreeStage const stage(tree);
    TreeNode *const item = tree.InsertItem("item", 0, 0);
    tree.InsertItem("child", item);
    Rect const label = stage.Label(item);
    int const y = (label.top + label.bottom) / 2;
    test::Rows<char const *, Point, unsigned, HTREEITEM> const cases = {
        {"label", {label.left + 2, y}, TVHT_ONITEMLABEL, item},
        {"last of the label", {label.right - 1, y}, TVHT_ONITEMLABEL, item},
        {"behind the label", {label.right, y}, TVHT_ONITEMRIGHT, item},
        {"icon", {label.left - 8, y}, TVHT_ONITEMICON, item},
        {"expander", {5, y}, TVHT_ONITEMBUTTON, item},
        {"below the items", {30, tree.viewport()->height() - 1}, TVHT_NOWHERE, nullptr},
        {"above", {30, -1}, TVHT_ABOVE, nullptr},
        {"below", {30, tree.viewport()->height()}, TVHT_BELOW, nullptr},
        {"left", {-1, y}, TVHT_TOLEFT, nullptr},
        {"right and above", {tree.viewport()->width(), -3}, TVHT_TORIGHT | TVHT_ABOVE, nullptr},
    };
    for (Qt::LayoutDirection const direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        tree.setLayoutDirection(direction);
        for (auto const &[name, point, expected, hit] : cases) {
            unsigned flags = 0;
            int const width = tree.viewport()->width();
            bool const turned = direction == Qt::RightToLeft && point.x >= 0 && point.x < width;
            Point const at{turned ? width - 1 - point.x : point.x, point.y};
            EXPECT_EQ(tree.HitTest(at, &flags), hit) << name;
            EXPECT_EQ(flags, expected) << name << turned;
        }
    }
}

TEST(TreeView, TheKeyboardReachesEverything) {
    TellingTree tree;
    TreeStage stage(tree);
    Family const family(tree);
    tree.InsertItem("deep", family.second);
    tree.SelectItem(family.parent);
    test::Rows<Qt::Key, char const *, bool, bool> const steps = {
        // selected, whether the parent is expanded, mirrored
        {Qt::Key_Right, "parent", true, false},  {Qt::Key_Right, "first", true, false},
        {Qt::Key_Down, "second", true, false},   {Qt::Key_Left, "parent", true, false},
        {Qt::Key_Left, "parent", false, false},  {Qt::Key_Plus, "parent", true, false},
        {Qt::Key_Minus, "parent", false, false}, {Qt::Key_Asterisk, "parent", true, false},
        {Qt::Key_End, "other", true, false},     {Qt::Key_Up, "deep", true, false},
        {Qt::Key_Home, "parent", true, false},   {Qt::Key_PageDown, "other", true, false},
        {Qt::Key_PageUp, "parent", true, false}, {Qt::Key_Right, "parent", false, true},
        {Qt::Key_Left, "parent", true, true},    {Qt::Key_Left, "first", true, true},
        {Qt::Key_Right, "parent", true, true}};
    for (auto const &[key, selected, expanded, mirrored] : steps) {
        tree.setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
        stage.Key(key);
        EXPECT_EQ(tree.GetItemText(tree.GetSelectedItem()), selected) << key;
        EXPECT_EQ(tree.GetItemState(family.parent, 0xFF & ~TVIS_SELECTED),
                  TVIS_EXPANDEDONCE | (expanded ? TVIS_EXPANDED : 0U))
            << key;
    }
    QAction shortcut;
    shortcut.setShortcut(Qt::Key_S);
    QObject::connect(&shortcut, &QAction::triggered, [&tree] { tree.Tell("the window's shortcut"); });
    tree.addAction(&shortcut);
    tree.Take();
    stage.Type("se");
    EXPECT_EQ(tree.Take(), "parent>second");
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, QPoint(1, 1), tree.mapToGlobal(QPoint(1, 1)));
    QApplication::sendEvent(tree.viewport(), &menu);
    stage.Key(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_EQ(tree.Take(), "menu second, menu second");
}

TEST(TreeView, AnEditedLabelIsTakenOverOnlyIfSomebodySaysSo) {
    TreeView tree;
    TreeStage stage(tree);
    tree.ModifyStyle(0, TVS_EDITLABELS);
    TreeNode *const item = tree.InsertItem("old");
    tree.SelectItem(item);
    int asked = 0;
    bool take = false;
    QObject::connect(&tree, &TreeView::EndLabelEdit, [&](NMTVDISPINFO *info, long long *result) {
        asked += info->item.pszText == nullptr ? 100 : 1;
        *result = take ? 1 : 0;
    });
    auto const edit = [&](int endKey) {
        stage.Key(Qt::Key_F2);
        QLineEdit *const line = tree.GetEditControl();
        ASSERT_NE(line, nullptr);
        Rect const label = stage.Label(item);
        EXPECT_EQ(line->pos(), QPoint(label.left - 2, 0));
        EXPECT_EQ(line->height(), std::max(label.Height(), line->minimumSizeHint().height()));
        test::Shot(tree, "tree-view-label-edit");
        QTest::keyClicks(line, "new");
        QTest::keyClick(line, static_cast<Qt::Key>(endKey));
        EXPECT_EQ(tree.GetEditControl(), nullptr);
    };
    edit(Qt::Key_Return);
    EXPECT_EQ(tree.GetItemText(item), "old");
    take = true;
    edit(Qt::Key_Escape);
    EXPECT_EQ(tree.GetItemText(item), "old");
    EXPECT_EQ(asked, 101);
    edit(Qt::Key_Return);
    EXPECT_EQ(tree.GetItemText(item), "new");
    EXPECT_TRUE(tree.hasFocus() && tree.isVisible());
    stage.Click(stage.On(item)); // on what is selected: the edit opens after a while
    ASSERT_TRUE(test::Eventually([&] { return tree.GetEditControl() != nullptr; }));
    tree.GetEditControl()->setText("newer");
    EXPECT_EQ(tree.EditLabel(nullptr), nullptr);
    EXPECT_EQ(tree.GetItemText(item), "newer");
    QLineEdit &line = *tree.EditLabel(item);
    line.setText("a label with more room");
    EXPECT_GE(line.width(), line.fontMetrics().horizontalAdvance(line.text()));
    line.setText("newest");
    QFocusEvent menu(QEvent::FocusOut, Qt::PopupFocusReason);
    QApplication::sendEvent(tree.GetEditControl(), &menu);
    EXPECT_NE(tree.GetEditControl(), nullptr) << "its own menu is open";
    tree.setFocus();
    EXPECT_EQ(tree.GetEditControl(), nullptr);
    EXPECT_EQ(tree.GetItemText(item), "newest");
}

TEST(TreeView, AnEditEndsWithItsItemAndWithTheTree) {
    auto tree = std::make_unique<TreeView>();
    TreeStage const stage(*tree);
    Family const family(*tree);
    ASSERT_NE(tree->EditLabel(family.first), nullptr);
    tree->DeleteItem(family.parent);
    EXPECT_EQ(tree->GetEditControl(), nullptr);
    ASSERT_NE(tree->EditLabel(family.other), nullptr);
    tree->DeleteAllItems();
    EXPECT_EQ(tree->GetEditControl(), nullptr);
    ASSERT_NE(tree->EditLabel(tree->InsertItem("new")), nullptr);
    tree.reset(); // must not crash
}

TEST(TreeView, TenThousandLevelsAreExpandedShownAndDeleted) {
    TreeView tree;
    TreeStage const stage(tree);
    HTREEITEM item = tree.InsertItem("top");
    for (int i = 1; i < 10'000; ++i) {
        item = tree.InsertItem("level", item);
        tree.SetItemState(tree.GetParentItem(item), TVIS_EXPANDED, TVIS_EXPANDED);
    }
    tree.SelectItem(item);
    tree.grab();
    EXPECT_EQ(tree.GetSelectedItem(), item);
    tree.DeleteItem(tree.GetRootItem());
    EXPECT_EQ(tree.GetCount(), 0U);
}

TEST(TreeView, TheWindowScrollsToTheItemThatIsToStandFirst) {
    TreeView tree;
    TreeStage const stage(tree);
    for (int i = 0; i < 200; ++i)
        tree.InsertItem("item " + std::to_string(i));
    TreeNode *const first = tree.GetRootItem();
    EXPECT_EQ(tree.GetFirstVisibleItem(), first);
    TreeNode *const wanted = tree.GetNextVisibleItem(tree.GetNextVisibleItem(first));
    tree.SelectSetFirstVisible(wanted);
    EXPECT_EQ(tree.GetFirstVisibleItem(), wanted);
    EXPECT_EQ(tree.GetPrevVisibleItem(tree.GetPrevVisibleItem(wanted)), first);
    Rect rect;
    EXPECT_TRUE(tree.GetItemRect(wanted, rect, false));
    EXPECT_EQ(rect.top, 0);
}

} // namespace
} // namespace zelvar
