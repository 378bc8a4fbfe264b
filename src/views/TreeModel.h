#pragma once

#include "zelvar/views/TreeTypes.h"
#include "zelvar/views/core/TreeNodes.h"

#include <QtCore/QAbstractItemModel>

namespace zelvar {

/// The items of a tree view as the toolkit's views want them. An index's pointer is the item.
class TreeModel : public QAbstractItemModel {
    Q_OBJECT

public:
    [[nodiscard]] TreeNodes &Nodes() { return m_nodes; }
    [[nodiscard]] TreeNodes const &Nodes() const { return m_nodes; }
    /// Invalid for null and for the invisible root.
    [[nodiscard]] QModelIndex IndexOf(TreeNode const *node) const;
    /// The invisible root for an invalid index.
    [[nodiscard]] TreeNode *NodeOf(QModelIndex const &index) const;

    /// `after` is a child of `parent`, or null for the start; `item` gives what its mask says.
    TreeNode *Insert(TreeNode &parent, TreeNode *after, TVITEM const &item, std::string_view text);
    void Delete(TreeNode &node);
    void DeleteAll();
    void SortChildren(TreeNode &parent);
    void Changed(TreeNode const &node);

    [[nodiscard]] QModelIndex index(int row, int column, QModelIndex const &parent) const override;
    [[nodiscard]] QModelIndex parent(QModelIndex const &index) const override;
    [[nodiscard]] int rowCount(QModelIndex const &parent) const override;
    [[nodiscard]] int columnCount(QModelIndex const & /*parent*/) const override { return 1; }
    [[nodiscard]] bool hasChildren(QModelIndex const &parent) const override;
    [[nodiscard]] QVariant data(QModelIndex const &index, int role) const override;

private:
    mutable TreeNodes m_nodes;
};

} // namespace zelvar
