#include "zelvar/views/TreeItemDelegate.h"

#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/views/TreeView.h"

#include <QtGui/QPainter>

namespace zelvar {

TreeItemDelegate::TreeItemDelegate(TreeView &tree) : QStyledItemDelegate(&tree), m_tree(tree) {}

void TreeItemDelegate::initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = platform::Isolated(option->text, option->direction);
    auto const &node = *static_cast<TreeNode const *>(index.internalPointer());
    if ((node.state & TVIS_BOLD) != 0) {
        option->font.setBold(true);
        option->fontMetrics = QFontMetrics(option->font);
    }
    if (m_tree.m_dropTarget == &node)
        option->state |= QStyle::State_Selected | QStyle::State_Active;
    option->textElideMode = Qt::ElideNone;
    if (m_tree.m_images == nullptr)
        return;
    // Items without an image keep its room, so that the texts of siblings stand below each other.
    int const side = m_tree.m_pictureSide;
    option->features |= QStyleOptionViewItem::HasDecoration;
    option->decorationSize = QSize(side, side);
    bool const selected = m_tree.m_selected == &node;
    QPixmap const picture = platform::ListPicture(m_tree.m_images, selected ? node.selectedImage : node.image,
                                                  m_tree.devicePixelRatioF(), side);
    option->icon = QIcon(picture);
    option->icon.addPixmap(picture, QIcon::Selected); // its colours may mean something
}

void TreeItemDelegate::paint(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const {
    constexpr double faint = 0.5;
    auto const &node = *static_cast<TreeNode const *>(index.internalPointer());
    qreal const opacity = painter->opacity();
    if ((node.state & TVIS_CUT) != 0)
        painter->setOpacity(faint);
    QStyledItemDelegate::paint(painter, option, index);
    painter->setOpacity(opacity);
}

} // namespace zelvar
