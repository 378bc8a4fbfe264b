#pragma once

#include "zelvar/views/core/TreeNode.h"

#include <vector>

namespace zelvar {

/// The children of one tree item, in order: chained for walks, and in blocks by which a child's row and a row's child
/// are found. Insertion and removal anywhere cost no more than a block, whatever the number of children.
class TreeChildren {
public:
    TreeChildren();
    ~TreeChildren();
    TreeChildren(TreeChildren const &) = delete;
    TreeChildren &operator=(TreeChildren const &) = delete;

    [[nodiscard]] TreeNode *First() const { return m_first; }
    [[nodiscard]] TreeNode *Last() const { return m_last; }
    [[nodiscard]] int Count() const { return m_count; }
    [[nodiscard]] TreeNode *At(int row) const; ///< null for no such row
    [[nodiscard]] int RowOf(TreeNode const &child) const;

    /// Behind `after`, one of the children; at the start if that is null.
    void Insert(TreeNode &child, TreeNode *after);
    /// Unlinks it; it stays the caller's.
    void Remove(TreeNode &child);
    /// Puts the same children into another order.
    void Reorder(std::vector<TreeNode *> const &children);

private:
    struct Block {
        std::size_t number = 0; ///< place in `m_blocks`
        int start = 0;          ///< row of its first child, if known
        std::vector<TreeNode *> nodes;
    };
    [[nodiscard]] static std::uint32_t SlotOf(Block const &block, TreeNode const &child);
    void Append(TreeNode &child);
    void Split(Block &block);
    void Renumber(std::size_t from);
    /// Makes the starts of the blocks up to `number` known.
    void KnowStarts(std::size_t number) const;
    void Link(TreeNode &child, TreeNode *after);

    std::vector<std::unique_ptr<Block>> m_blocks; ///< none is empty
    mutable std::size_t m_known = 0;              ///< blocks with a known start
    TreeNode *m_first = nullptr;
    TreeNode *m_last = nullptr;
    int m_count = 0;
};

} // namespace zelvar
