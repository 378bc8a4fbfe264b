#include "zelvar/views/TreeModel.h"

#include "zelvar/platform/ui/Text.h"

namespace zelvar {

namespace {
TreeNode rootPosition;
TreeNode firstPosition;
TreeNode lastPosition;
TreeNode sortPosition;
} // namespace

TreeNode *const TVI_ROOT = &rootPosition;
TreeNode *const TVI_FIRST = &firstPosition;
TreeNode *const TVI_LAST = &lastPosition;
TreeNode *const TVI_SORT = &sortPosition;

} // namespace zelvar

namespace zelvar {

namespace {

void Fill(TreeNode &node, TVITEM const &item, std::string_view text) {
    constexpr unsigned stored = TVIS_BOLD | TVIS_CUT;
    if ((item.mask & TVIF_TEXT) != 0)
        node.text = text;
    if ((item.mask & TVIF_PARAM) != 0)
        node.data = static_cast<std::uint64_t>(item.lParam);
    if ((item.mask & TVIF_IMAGE) != 0)
        node.image = item.iImage;
    if ((item.mask & TVIF_SELECTEDIMAGE) != 0)
        node.selectedImage = item.iSelectedImage;
    if ((item.mask & TVIF_STATE) != 0)
        node.state = item.state & item.stateMask & stored;
    if ((item.mask & TVIF_CHILDREN) != 0)
        node.markedAsParent = item.cChildren != 0;
}

} // namespace

QModelIndex TreeModel::IndexOf(TreeNode const *node) const {
    if (node == nullptr || node->parent == nullptr)
        return {};
    return createIndex(TreeNodes::RowOf(*node), 0, node);
}

TreeNode *TreeModel::NodeOf(QModelIndex const &index) const {
    return index.isValid() ? static_cast<TreeNode *>(index.internalPointer()) : m_nodes.Root();
}

TreeNode *TreeModel::Insert(TreeNode &parent, TreeNode *after, TVITEM const &item, std::string_view text) {
    int const row = after == nullptr ? 0 : TreeNodes::RowOf(*after) + 1;
    beginInsertRows(IndexOf(&parent), row, row);
    TreeNode *const node = m_nodes.Insert(parent, after);
    Fill(*node, item, text);
    endInsertRows();
    return node;
}

void TreeModel::Delete(TreeNode &node) {
    int const row = TreeNodes::RowOf(node);
    beginRemoveRows(IndexOf(node.parent), row, row);
    m_nodes.Delete(node);
    endRemoveRows();
}

void TreeModel::DeleteAll() {
    beginResetModel();
    m_nodes.DeleteAll();
    endResetModel();
}

void TreeModel::SortChildren(TreeNode &parent) {
    if (parent.ChildCount() < 2)
        return;
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    parent.children->Reorder(TreeNodes::Sorted(parent));
    QModelIndexList const before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (QModelIndex const &index : before)
        after.append(IndexOf(NodeOf(index)));
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void TreeModel::Changed(TreeNode const &node) {
    QModelIndex const index = IndexOf(&node);
    Q_EMIT dataChanged(index, index);
}

QModelIndex TreeModel::index(int row, int column, QModelIndex const &parent) const {
    TreeNode const *const child = column == 0 ? TreeNodes::ChildAt(*NodeOf(parent), row) : nullptr;
    return child == nullptr ? QModelIndex() : createIndex(row, 0, child);
}

QModelIndex TreeModel::parent(QModelIndex const &index) const {
    return index.isValid() ? IndexOf(NodeOf(index)->parent) : QModelIndex();
}

int TreeModel::rowCount(QModelIndex const &parent) const { return NodeOf(parent)->ChildCount(); }

bool TreeModel::hasChildren(QModelIndex const &parent) const {
    TreeNode const &node = *NodeOf(parent);
    return node.markedAsParent || node.FirstChild() != nullptr;
}

QVariant TreeModel::data(QModelIndex const &index, int role) const {
    if (index.isValid() && (role == Qt::DisplayRole || role == Qt::EditRole))
        return platform::ToQString(NodeOf(index)->text);
    return {};
}

} // namespace zelvar
