#pragma once

#include "zelvar/views/TreeView.h"

namespace zelvar {

/// Tree control iterator: walks a tree, or what lies below one item and that item itself, depth first.
class CTreeCtrlItr {
public:
    /// Null as `root` is the whole tree. It stands nowhere before `Frst`.
    CTreeCtrlItr(TreeView *tree, HTREEITEM root) : m_tree(tree), m_root(root) {}

    HTREEITEM Frst() { return m_item = m_root != nullptr ? m_root : m_tree->GetRootItem(); }
    HTREEITEM Next();
    [[nodiscard]] bool Cont() const { return m_item != nullptr; }
    [[nodiscard]] HTREEITEM Crnt() const { return m_item; }
    HTREEITEM operator*() const { return m_item; }

private:
    TreeView *m_tree; ///< not owned
    HTREEITEM m_item = nullptr;
    HTREEITEM m_root;
};

inline HTREEITEM CTreeCtrlItr::Next() {
    HTREEITEM at = m_item;
    if (at == nullptr)
        return nullptr;
    m_item = m_tree->GetChildItem(at);
    while (m_item == nullptr && at != nullptr && at != m_root) {
        m_item = m_tree->GetNextSiblingItem(at);
        at = m_tree->GetParentItem(at);
    }
    return m_item;
}

} // namespace zelvar
