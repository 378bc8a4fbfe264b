#pragma once

#include <QtWidgets/QStyledItemDelegate>

namespace zelvar {

class CZelProp;
class CZelPropList;

/// What edits and draws the values of a property list: to a `QStyledItemDelegate` it adds an editor for each kind of
/// value, which keeps an entry that the value's rule does not take.
class PropDelegate final : public QStyledItemDelegate {
public:
    explicit PropDelegate(CZelPropList &list);

    QWidget *createEditor(QWidget *parent, QStyleOptionViewItem const &option, QModelIndex const &index) const override;
    void setEditorData(QWidget *editor, QModelIndex const &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model, QModelIndex const &index) const override;
    void updateEditorGeometry(QWidget *editor, QStyleOptionViewItem const &option,
                              QModelIndex const &index) const override;
    [[nodiscard]] QSize sizeHint(QStyleOptionViewItem const &option, QModelIndex const &index) const override;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, QStyleOptionViewItem const &option,
                     QModelIndex const &index) override;
    void initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const override;

private:
    [[nodiscard]] CZelProp &PropAt(QModelIndex const &index) const;
    [[nodiscard]] QWidget *EditorOf(QObject *part) const;
    void AskFor(QWidget *editor);
    bool TakesKey(QWidget *editor, QObject const *part, int key, Qt::KeyboardModifiers modifiers);
    void Commit(QWidget *editor, EndEditHint hint);
    void Close(QWidget *editor, EndEditHint hint);
    void LeaveFocus(QWidget *editor);

    CZelPropList &m_list;
    bool m_asking = false; ///< a dialog is up for the value that is being edited
};

} // namespace zelvar
