#pragma once

#include "zelvar/views/core/TreeChildren.h"

namespace zelvar {

/// All items of a tree view below an invisible root: making, deleting, order and walks. No operation calls itself, so
/// that a tree may be as deep as it likes.
class TreeNodes {
public:
    TreeNodes();
    ~TreeNodes();
    TreeNodes(TreeNodes const &) = delete;
    TreeNodes &operator=(TreeNodes const &) = delete;

    [[nodiscard]] TreeNode *Root() { return &m_root; }
    [[nodiscard]] TreeNode const *Root() const { return &m_root; }
    [[nodiscard]] int Count() const { return m_count; } ///< without the root

    /// Makes a child of `parent` behind `after`, its first one if that is null.
    TreeNode *Insert(TreeNode &parent, TreeNode *after);
    /// Deletes the item with all below it.
    void Delete(TreeNode &node);
    void DeleteAll();

    [[nodiscard]] static int RowOf(TreeNode const &node) { return node.parent->children->RowOf(node); }
    [[nodiscard]] static TreeNode *ChildAt(TreeNode const &parent, int row) {
        return parent.children == nullptr ? nullptr : parent.children->At(row);
    }
    /// The children by their texts, letter case not regarded; equal ones keep their order.
    [[nodiscard]] static std::vector<TreeNode *> Sorted(TreeNode const &parent);

    /// True if `node` is `ancestor` or lies below it.
    [[nodiscard]] static bool IsWithin(TreeNode const &node, TreeNode const &ancestor);
    /// The next item depth first, children before siblings, that lies below `top`; null at the end.
    [[nodiscard]] static TreeNode *NextWithin(TreeNode const &node, TreeNode const &top);

    // The order of what is shown, with what is collapsed left out.
    [[nodiscard]] TreeNode *NextShown(TreeNode const &node) const;
    [[nodiscard]] TreeNode *PreviousShown(TreeNode const &node) const;
    /// All items above it are expanded.
    [[nodiscard]] bool IsShown(TreeNode const &node) const;

private:
    static TreeNode *Deepest(TreeNode &node);

    TreeNode m_root;
    int m_count = 0;
};

} // namespace zelvar
