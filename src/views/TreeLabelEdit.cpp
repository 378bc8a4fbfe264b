#include "zelvar/views/TreeLabelEdit.h"

#include "zelvar/platform/ui/Text.h"
#include "zelvar/views/TreeView.h"

#include <QtGui/QKeyEvent>

#include <algorithm>

namespace zelvar {

TreeLabelEdit::TreeLabelEdit(TreeView &tree, HTREEITEM item)
    : QLineEdit(platform::ToQString(item->text), tree.viewport()), m_tree(tree), m_item(item) {
    setFont(tree.font());
    setAccessibleName(text());
    connect(this, &QLineEdit::textChanged, this, &TreeLabelEdit::GrowToText);
}

void TreeLabelEdit::OpenOver(Rect const &label) {
    int const height = std::max(label.Height(), minimumSizeHint().height());
    int const top = std::max(label.top - (height - label.Height()) / 2, 0);
    setGeometry(label.left - 2, top, label.Width() + 4, height);
    GrowToText();
    selectAll();
    show();
    setFocus(Qt::OtherFocusReason);
}

void TreeLabelEdit::GrowToText() {
    constexpr int room = 16; // pixels for the frame and what is typed next
    int const wanted = fontMetrics().horizontalAdvance(text()) + room;
    int const end = x() + width();
    int const most = std::max(width(), isRightToLeft() ? end : m_tree.viewport()->width() - x());
    int const grown = std::clamp(wanted, width(), most);
    setGeometry(isRightToLeft() ? end - grown : x(), y(), grown, height());
}

bool TreeLabelEdit::event(QEvent *event) {
    if (event->type() == QEvent::ShortcutOverride && !m_ended && m_tree.PreTranslateMessage(*event)) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void TreeLabelEdit::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        End(true);
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        End(false);
    else
        QLineEdit::keyPressEvent(event);
    // What the edit has no use for is nobody's: neither the tree nor the dialog is meant.
    event->accept();
}

void TreeLabelEdit::focusOutEvent(QFocusEvent *event) {
    QLineEdit::focusOutEvent(event);
    // Its own menu takes the keyboard for a moment only.
    if (event->reason() != Qt::PopupFocusReason)
        End(false);
}

void TreeLabelEdit::End(bool cancel) {
    if (m_ended)
        return;
    bool const hadFocus = hasFocus();
    DString const typed = platform::ToDString(text());
    Discard();
    if (hadFocus)
        m_tree.setFocus(Qt::OtherFocusReason);
    m_tree.TellEndOfEdit(*this, cancel ? nullptr : &typed);
}

void TreeLabelEdit::Discard() {
    m_ended = true;
    hide();
    deleteLater();
}

} // namespace zelvar
