#include "zelvar/views/core/TreeNodes.h"

#include <gtest/gtest.h>

#include <random>

namespace zelvar {
namespace {

std::string Texts(TreeNode const &parent) {
    std::string texts;
    for (TreeNode const *child = parent.FirstChild(); child != nullptr; child = child->next)
        texts += (texts.empty() ? "" : " ") + child->text;
    return texts;
}

TreeNode *Add(TreeNodes &nodes, TreeNode &parent, TreeNode *after, DString const &text) {
    TreeNode *const node = nodes.Insert(parent, after);
    node->text = text;
    return node;
}

/// A chain of `levels` items, each the only child of the one before; the deepest one.
TreeNode *Chain(TreeNodes &nodes, int levels) {
    TreeNode *at = nodes.Root();
    for (int i = 0; i < levels; ++i) {
        at = nodes.Insert(*at, nullptr);
        at->state = TVIS_EXPANDED;
    }
    return at;
}

TEST(TreeNodes, RowsAndChildrenAgreeAfterRandomInsertionsAndRemovals) {
    TreeNodes nodes;
    TreeNode &root = *nodes.Root();
    std::vector<TreeNode *> expected;
    std::mt19937 random(7); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
    for (int step = 0; step < 6000; ++step) {
        bool const remove = step > 3000 && random() % 3 != 0;
        // The first ones are all put before the others.
        auto const at =
            step < 1000 ? 0 : static_cast<std::ptrdiff_t>(random() % (expected.size() + (remove ? 0U : 1U)));
        if (remove) {
            nodes.Delete(*expected[static_cast<std::size_t>(at)]);
            expected.erase(expected.begin() + at);
        } else {
            TreeNode *const after = at == 0 ? nullptr : expected[static_cast<std::size_t>(at) - 1];
            expected.insert(expected.begin() + at, nodes.Insert(root, after));
        }
        ASSERT_EQ(TreeNodes::RowOf(*expected.back()) + 1, root.ChildCount()) << "step " << step;
        if (step % 500 != 499)
            continue;
        ASSERT_EQ(root.ChildCount(), static_cast<int>(expected.size()));
        TreeNode const *chained = root.FirstChild();
        for (std::size_t row = 0; row < expected.size(); ++row, chained = chained->next) {
            ASSERT_EQ(chained, expected[row]);
            ASSERT_EQ(TreeNodes::RowOf(*expected[row]), static_cast<int>(row));
            ASSERT_EQ(TreeNodes::ChildAt(root, static_cast<int>(row)), expected[row]);
        }
        ASSERT_EQ(root.LastChild(), expected.back());
    }
    EXPECT_EQ(TreeNodes::ChildAt(root, -1), nullptr);
    EXPECT_EQ(TreeNodes::ChildAt(root, root.ChildCount()), nullptr);
}

TEST(TreeNodes, ATreeOfHundredThousandLevelsIsWalkedAndDeletedWithoutAStack) {
    constexpr int levels = 100'000;
    TreeNodes nodes;
    TreeNode const *const deepest = Chain(nodes, levels);
    TreeNode const &root = *nodes.Root();
    int steps = 0;
    for (TreeNode const *at = &root; at != nullptr; at = TreeNodes::NextWithin(*at, root))
        ++steps;
    EXPECT_EQ(steps, levels + 1);
    EXPECT_TRUE(nodes.IsShown(*deepest));
    EXPECT_EQ(nodes.NextShown(*deepest), nullptr);
    nodes.Delete(*root.FirstChild());
    EXPECT_EQ(nodes.Count(), 0);
    Chain(nodes, levels); // deleted with the tree
}

TEST(TreeNodes, SortingDisregardsLetterCaseAndKeepsEqualOnesInOrder) {
    TreeNodes nodes;
    TreeNode &root = *nodes.Root();
    for (char const *text : {"b", "A", "\xC3\xA9", "a", "B"})
        Add(nodes, root, root.LastChild(), text);
    root.children->Reorder(TreeNodes::Sorted(root));
    EXPECT_EQ(Texts(root), "A a b B \xC3\xA9");
    EXPECT_EQ(TreeNodes::RowOf(*root.LastChild()), 4);
    EXPECT_EQ(TreeNodes::SortedPlace(root, "AA"), TreeNodes::ChildAt(root, 1));
    EXPECT_EQ(TreeNodes::SortedPlace(root, ""), nullptr);
}

TEST(TreeNodes, TheShownOrderLeavesOutWhatIsCollapsed) {
    TreeNodes nodes;
    TreeNode &root = *nodes.Root();
    TreeNode *const a = Add(nodes, root, nullptr, "a");
    TreeNode *const a1 = Add(nodes, *a, nullptr, "a1");
    TreeNode *const a11 = Add(nodes, *a1, nullptr, "a11");
    TreeNode *const b = Add(nodes, root, a, "b");
    EXPECT_EQ(nodes.NextShown(*a), b);
    EXPECT_EQ(nodes.PreviousShown(*b), a);
    EXPECT_FALSE(nodes.IsShown(*a1));
    a->state = TVIS_EXPANDED;
    EXPECT_EQ(nodes.NextShown(*a), a1);
    EXPECT_EQ(nodes.NextShown(*a1), b);
    EXPECT_EQ(nodes.PreviousShown(*b), a1);
    EXPECT_FALSE(nodes.IsShown(*a11));
    a1->state = TVIS_EXPANDED;
    EXPECT_EQ(nodes.NextShown(*a11), b);
    EXPECT_EQ(nodes.PreviousShown(*b), a11);
    EXPECT_EQ(nodes.PreviousShown(*a1), a);
    EXPECT_EQ(nodes.PreviousShown(*a), nullptr);
}

} // namespace
} // namespace zelvar
