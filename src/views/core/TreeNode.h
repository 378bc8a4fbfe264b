#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/views/core/TreeViewNumbers.h"

#include <cstdint>
#include <memory>

namespace zelvar {

class TreeChildren;

/// One item of a tree view. Made, linked and deleted by `TreeNodes` alone; others read it.
struct TreeNode {
    TreeNode();
    ~TreeNode();
    TreeNode(TreeNode const &) = delete;
    TreeNode &operator=(TreeNode const &) = delete;

    DString text;
    std::uint64_t data = 0; ///< the caller's
    int image = -1;
    int selectedImage = -1;
    unsigned state = 0;          ///< what is stored with the item: `TVIS_CUT`, `_BOLD`, `_EXPANDED`, `_EXPANDEDONCE`
    bool markedAsParent = false; ///< shows an expander before it has children

    TreeNode *parent = nullptr; ///< null only for the invisible root
    TreeNode *next = nullptr;   ///< sibling, as `previous`
    TreeNode *previous = nullptr;
    std::unique_ptr<TreeChildren> children; ///< null until the first child

    // Where `TreeChildren` of the parent keeps it.
    void *block = nullptr;
    mutable std::uint32_t slot = 0; ///< in the block, as far as known

    [[nodiscard]] TreeNode *FirstChild() const;
    [[nodiscard]] TreeNode *LastChild() const;
    [[nodiscard]] int ChildCount() const;
    [[nodiscard]] bool IsExpanded() const { return (state & TVIS_EXPANDED) != 0; }
};

} // namespace zelvar
