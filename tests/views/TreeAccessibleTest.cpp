#include "support/TreeStage.h"

#include <QtGui/QAccessible>

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
    auto const item = [&](int row) { return reader->tableInterface()->cellAt(row, 0); };
    EXPECT_EQ(item(0)->role(), QAccessible::TreeItem);
    EXPECT_EQ(item(0)->text(QAccessible::Name), "parent");
    EXPECT_TRUE(item(0)->state().selected);
    EXPECT_TRUE(item(0)->state().expandable);
    EXPECT_FALSE(item(0)->state().expanded);
    EXPECT_TRUE(item(1)->state().expandable); // it is only marked
    EXPECT_FALSE(item(1)->state().selected);

    tree.Expand(parent, TVE_EXPAND);
    QApplication::processEvents();
    EXPECT_EQ(reader->tableInterface()->rowCount(), 3);
    EXPECT_TRUE(item(0)->state().expanded);
    EXPECT_EQ(item(1)->text(QAccessible::Name), "child");
    EXPECT_FALSE(item(1)->state().expandable);
}

} // namespace
} // namespace zelvar
