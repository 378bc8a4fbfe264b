#pragma once

#include "zelvar/views/core/TreeChildren.h"

#include <string_view>

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

    /// The child behind which `text` belongs among sorted ones, letter case not regarded; null before all of them.
    [[nodiscard]] static TreeNode *SortedPlace(TreeNode const &parent, std::string_view text);

    /// True if `node` is `ancestor` or lies below it.
    [[nodiscard]] static bool IsWithin(TreeNode const &node, TreeNode const &ancestor);
    /// The next item depth first, children before siblings, that lies below `top`; null at the end.
    [[nodiscard]] static TreeNode *NextWithin(TreeNode const &node, TreeNode const &top);

    // The order of what is shown, with what is collapsed left out.
    [[nodiscard]] TreeNode *NextShown(TreeNode const &node) const;
    [[nodiscard]] TreeNode *PreviousShown(TreeNode const &node) const;
    /// What `TVGN_NEXT`, `_PREVIOUS`, `_PARENT`, `_NEXTVISIBLE` or `_PREVIOUSVISIBLE` leads to; null for other codes.
    [[nodiscard]] TreeNode *Neighbour(TreeNode const &node, unsigned code) const;
    /// Who is selected in its place when it goes: the next sibling, or else the previous one, or else its parent.
    [[nodiscard]] TreeNode *HeirOf(TreeNode const &node) const;
    /// All items above it are expanded.
    [[nodiscard]] bool IsShown(TreeNode const &node) const;

private:
    static TreeNode *Deepest(TreeNode &node);

    TreeNode m_root;
    int m_count = 0;
};

} // namespace zelvar
