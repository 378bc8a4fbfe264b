#pragma once

#include <QtWidgets/QTreeWidget>

namespace zelvar {

class CZelProp;
class CZelPropList;

/// The tree of a property list: to a `QTreeWidget` it adds the list's keys, the lines between rows, and a menu to copy
/// and reset values.
class PropTree final : public QTreeWidget {
public:
    explicit PropTree(CZelPropList &list);

protected:
    bool edit(QModelIndex const &index, EditTrigger trigger, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void drawRow(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const override;
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    [[nodiscard]] CZelProp *Current() const;
    void CopyValue() const;
    void Reset(CZelProp &prop);
    void EditNeighbour(bool forward);

    CZelPropList &m_list;
};

} // namespace zelvar
