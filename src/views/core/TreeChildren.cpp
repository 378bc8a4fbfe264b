#include "zelvar/views/core/TreeChildren.h"

#include <algorithm>

namespace zelvar {

namespace {
constexpr std::size_t kLargestBlock = 512; // children: few enough to move on each insertion
}

TreeNode::TreeNode() = default;
TreeNode::~TreeNode() = default;
TreeNode *TreeNode::FirstChild() const { return children == nullptr ? nullptr : children->First(); }
TreeNode *TreeNode::LastChild() const { return children == nullptr ? nullptr : children->Last(); }
int TreeNode::ChildCount() const { return children == nullptr ? 0 : children->Count(); }

TreeChildren::TreeChildren() = default;
TreeChildren::~TreeChildren() = default;

void TreeChildren::KnowStarts(std::size_t number) const {
    for (; m_known <= number; ++m_known) {
        Block const *const before = m_known == 0 ? nullptr : m_blocks[m_known - 1].get();
        m_blocks[m_known]->start = before == nullptr ? 0 : before->start + static_cast<int>(before->nodes.size());
    }
}

std::uint32_t TreeChildren::SlotOf(Block const &block, TreeNode const &child) {
    if (child.slot >= block.nodes.size() || block.nodes[child.slot] != &child)
        child.slot =
            static_cast<std::uint32_t>(std::find(block.nodes.begin(), block.nodes.end(), &child) - block.nodes.begin());
    return child.slot;
}

int TreeChildren::RowOf(TreeNode const &child) const {
    auto const &block = *static_cast<Block const *>(child.block);
    KnowStarts(block.number);
    return block.start + static_cast<int>(SlotOf(block, child));
}

TreeNode *TreeChildren::At(int row) const {
    if (row < 0 || row >= m_count)
        return nullptr;
    KnowStarts(m_blocks.size() - 1);
    auto const behind = std::upper_bound(m_blocks.begin(), m_blocks.end(), row,
                                         [](int wanted, auto const &block) { return wanted < block->start; });
    Block const &block = **std::prev(behind);
    return block.nodes[static_cast<std::size_t>(row - block.start)];
}

void TreeChildren::Link(TreeNode &child, TreeNode *after) {
    child.previous = after;
    child.next = after == nullptr ? m_first : after->next;
    (child.previous == nullptr ? m_first : child.previous->next) = &child;
    (child.next == nullptr ? m_last : child.next->previous) = &child;
    ++m_count;
}

void TreeChildren::Renumber(std::size_t from) {
    for (std::size_t i = from; i < m_blocks.size(); ++i)
        m_blocks[i]->number = i;
    m_known = std::min(m_known, from);
}

void TreeChildren::Append(TreeNode &child) {
    if (m_blocks.empty() || m_blocks.back()->nodes.size() >= kLargestBlock) {
        m_blocks.push_back(std::make_unique<Block>());
        m_blocks.back()->number = m_blocks.size() - 1;
    }
    Block &block = *m_blocks.back();
    child.block = &block;
    child.slot = static_cast<std::uint32_t>(block.nodes.size());
    block.nodes.push_back(&child);
}

void TreeChildren::Insert(TreeNode &child, TreeNode *after) {
    bool const last = after == m_last;
    Link(child, after);
    if (last)
        return Append(child);
    Block &block = after == nullptr ? *m_blocks.front() : *static_cast<Block *>(after->block);
    std::uint32_t const slot = after == nullptr ? 0 : SlotOf(block, *after) + 1;
    block.nodes.insert(block.nodes.begin() + slot, &child);
    child.block = &block;
    child.slot = slot;
    m_known = std::min(m_known, block.number + 1);
    if (block.nodes.size() > kLargestBlock)
        Split(block);
}

void TreeChildren::Split(Block &block) {
    auto half = std::make_unique<Block>();
    auto const middle = block.nodes.begin() + static_cast<std::ptrdiff_t>(block.nodes.size() / 2);
    half->nodes.assign(middle, block.nodes.end());
    block.nodes.erase(middle, block.nodes.end());
    for (TreeNode *const node : half->nodes)
        node->block = half.get();
    std::size_t const number = block.number + 1;
    m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(number), std::move(half));
    Renumber(number);
}

void TreeChildren::Remove(TreeNode &child) {
    (child.previous == nullptr ? m_first : child.previous->next) = child.next;
    (child.next == nullptr ? m_last : child.next->previous) = child.previous;
    --m_count;
    auto &block = *static_cast<Block *>(child.block);
    block.nodes.erase(block.nodes.begin() + SlotOf(block, child));
    child.next = child.previous = nullptr;
    child.block = nullptr;
    std::size_t const number = block.number;
    m_known = std::min(m_known, number + 1);
    if (block.nodes.empty()) {
        m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(number));
        Renumber(number);
    }
}

void TreeChildren::Reorder(std::vector<TreeNode *> const &children) {
    m_blocks.clear();
    m_known = 0;
    m_first = m_last = nullptr;
    m_count = 0;
    for (TreeNode *const child : children) {
        Link(*child, m_last);
        Append(*child);
    }
}

} // namespace zelvar
