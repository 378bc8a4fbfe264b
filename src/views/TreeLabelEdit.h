#pragma once

#include "zelvar/views/TreeTypes.h"

#include <QtWidgets/QLineEdit>

namespace zelvar {

class TreeView;

/// Edit of one label of a tree view. A child of its viewport; ends once and deletes itself then.
class TreeLabelEdit : public QLineEdit {
    Q_OBJECT

public:
    TreeLabelEdit(TreeView &tree, HTREEITEM item);

    [[nodiscard]] HTREEITEM Item() const { return m_item; }
    [[nodiscard]] bool HasEnded() const { return m_ended; }
    /// Shows it over the label with all of its text selected, and takes the focus.
    void OpenOver(Rect const &label);
    void End(bool cancel);
    /// Ends without telling anyone: the item or the tree is about to go.
    void Discard();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void GrowToText();

    TreeView &m_tree;
    HTREEITEM m_item;
    bool m_ended = false;
};

} // namespace zelvar
