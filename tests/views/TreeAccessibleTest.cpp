#include "support/ScreenReader.h"
#include "support/TreeStage.h"

namespace zelvar {
namespace {

TEST(TreeAccessible, AScreenReaderHearsNamesAndStatesOfItems) {
    TreeView tree;
    test::TreeStage const stage(tree);
    TreeNode *const parent = tree.InsertItem("parent");
    tree.InsertItem("child", parent);
    TreeNode *const lazy = tree.InsertItem("lazy");
    tree.SetItemChildren(lazy, true);
    tree.SelectItem(parent);
    QApplication::processEvents();

    QAccessibleInterface *const reader = QAccessible::queryAccessibleInterface(&tree);
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->role(), QAccessible::Tree);
    ASSERT_NE(reader->tableInterface(), nullptr);
    EXPECT_EQ(reader->tableInterface()->rowCount(), 2);
    auto const item = [&](int row) {
        QAccessibleInterface const &cell = *reader->tableInterface()->cellAt(row, 0);
        EXPECT_EQ(cell.role(), QAccessible::TreeItem);
        return cell.text(QAccessible::Name).toStdString() + ": " + test::StatesOf(&cell);
    };
    EXPECT_EQ(item(0), "parent: selectable selected focusable focused expandable");
    EXPECT_EQ(item(1), "lazy: selectable focusable expandable") << "it is only marked";
    tree.Expand(parent, TVE_EXPAND);
    QApplication::processEvents();
    EXPECT_EQ(reader->tableInterface()->rowCount(), 3);
    EXPECT_EQ(item(0), "parent: selectable selected focusable focused expandable expanded");
    EXPECT_EQ(item(1), "child: selectable focusable");
}

} // namespace
} // namespace zelvar
