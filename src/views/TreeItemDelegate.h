#pragma once

#include <QtWidgets/QStyledItemDelegate>

namespace zelvar {

class TreeView;

/// Draws the items of a tree view.
class TreeItemDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit TreeItemDelegate(TreeView &tree);

    /// What the style needs to know of an item.
    void Describe(QStyleOptionViewItem &option, QModelIndex const &index) const { initStyleOption(&option, index); }
    void paint(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const override;

private:
    TreeView const &m_tree;
};

} // namespace zelvar
