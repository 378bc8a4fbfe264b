#include "zelvar/views/core/TreeNodes.h"

#include <algorithm>
#include <utility>

namespace zelvar {

TreeNodes::TreeNodes() = default;

TreeNodes::~TreeNodes() { DeleteAll(); }

TreeNode *TreeNodes::Insert(TreeNode &parent, TreeNode *after) {
    auto *const node = new TreeNode; // NOLINT(cppcoreguidelines-owning-memory): the tree's, until Delete
    node->parent = &parent;
    if (parent.children == nullptr)
        parent.children = std::make_unique<TreeChildren>();
    parent.children->Insert(*node, after);
    ++m_count;
    return node;
}

TreeNode *TreeNodes::Deepest(TreeNode &node) {
    TreeNode *at = &node;
    while (TreeNode *const child = at->LastChild())
        at = child;
    return at;
}

void TreeNodes::Delete(TreeNode &node) {
    // From the last leaf up: a child goes before its parent, and the last of many is the cheapest to take out.
    for (TreeNode *at = Deepest(node);;) {
        TreeNode *const parent = at->parent;
        bool const last = at == &node;
        parent->children->Remove(*at);
        delete at; // NOLINT(cppcoreguidelines-owning-memory): made by Insert
        --m_count;
        if (last)
            return;
        at = Deepest(*parent);
    }
}

void TreeNodes::DeleteAll() {
    while (TreeNode *const last = m_root.LastChild())
        Delete(*last);
}

std::vector<TreeNode *> TreeNodes::Sorted(TreeNode const &parent) {
    std::vector<std::pair<DString, TreeNode *>> keyed;
    keyed.reserve(static_cast<std::size_t>(parent.ChildCount()));
    for (TreeNode *child = parent.FirstChild(); child != nullptr; child = child->next)
        keyed.emplace_back(FoldCase(child->text), child);
    std::stable_sort(keyed.begin(), keyed.end(), [](auto const &a, auto const &b) { return a.first < b.first; });
    std::vector<TreeNode *> sorted;
    sorted.reserve(keyed.size());
    for (auto const &[key, child] : keyed)
        sorted.push_back(child);
    return sorted;
}

TreeNode *TreeNodes::SortedPlace(TreeNode const &parent, std::string_view text) {
    DString const key = FoldCase(text);
    TreeNode *place = parent.LastChild();
    while (place != nullptr && key < FoldCase(place->text))
        place = place->previous;
    return place;
}

bool TreeNodes::IsWithin(TreeNode const &node, TreeNode const &ancestor) {
    TreeNode const *at = &node;
    while (at != nullptr && at != &ancestor)
        at = at->parent;
    return at != nullptr;
}

TreeNode *TreeNodes::NextWithin(TreeNode const &node, TreeNode const &top) {
    if (TreeNode *const child = node.FirstChild())
        return child;
    for (TreeNode const *at = &node; at != &top && at != nullptr; at = at->parent)
        if (at->next != nullptr)
            return at->next;
    return nullptr;
}

TreeNode *TreeNodes::NextShown(TreeNode const &node) const {
    if (node.IsExpanded() && node.FirstChild() != nullptr)
        return node.FirstChild();
    for (TreeNode const *at = &node; at != &m_root; at = at->parent)
        if (at->next != nullptr)
            return at->next;
    return nullptr;
}

TreeNode *TreeNodes::PreviousShown(TreeNode const &node) const {
    if (node.previous == nullptr)
        return node.parent == &m_root ? nullptr : node.parent;
    TreeNode *at = node.previous;
    while (at->IsExpanded() && at->LastChild() != nullptr)
        at = at->LastChild();
    return at;
}

TreeNode *TreeNodes::Neighbour(TreeNode const &node, unsigned code) const {
    switch (code) {
    case TVGN_NEXT:
        return node.next;
    case TVGN_PREVIOUS:
        return node.previous;
    case TVGN_PARENT:
        return node.parent == &m_root ? nullptr : node.parent;
    case TVGN_NEXTVISIBLE:
        return NextShown(node);
    case TVGN_PREVIOUSVISIBLE:
        return PreviousShown(node);
    default:
        return nullptr;
    }
}

TreeNode *TreeNodes::HeirOf(TreeNode const &node) const {
    if (node.next != nullptr)
        return node.next;
    return node.previous != nullptr ? node.previous : Neighbour(node, TVGN_PARENT);
}

bool TreeNodes::IsShown(TreeNode const &node) const {
    for (TreeNode const *at = node.parent; at != &m_root; at = at->parent)
        if (!at->IsExpanded())
            return false;
    return true;
}

} // namespace zelvar
