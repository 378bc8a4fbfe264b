#include "zelvar/props/PropTree.h"

#include "zelvar/platform/ui/Text.h"
#include "zelvar/props/CZelPropList.h"

#include <QtGui/QClipboard>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>

namespace zelvar {

namespace {

constexpr int kValueColumn = 1;

/// A sign that a value may begin with.
bool IsTyping(QKeyEvent const &event) {
    bool const isPlain = !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return isPlain && !event.text().isEmpty() && event.text().front().isPrint() && event.key() != Qt::Key_Space;
}

} // namespace

PropTree::PropTree(CZelPropList &list) : QTreeWidget(&list), m_list(list) {
    setAccessibleName(platform::Shown("Properties"));
}

CZelProp *PropTree::Current() const { return static_cast<CZelProp *>(currentItem()); }

void PropTree::CopyValue() const {
    if (CZelProp const *const prop = Current())
        QApplication::clipboard()->setText(platform::ToQString(prop->GetValue()));
}

void PropTree::Reset(CZelProp &prop) { m_list.EnterValue(prop, prop.GetOriginalValue()); }

bool PropTree::edit(QModelIndex const &index, EditTrigger trigger, QEvent *event) {
    bool const typed = trigger == AnyKeyPressed;
    auto const *const prop = static_cast<CZelProp const *>(itemFromIndex(index));
    if (typed && (prop == nullptr || !prop->TakesEntries() || prop->GetRule().kind == PropRule::Kind::Boolean))
        return false; // it looks for the name
    if (trigger == SelectedClicked && index.column() != kValueColumn)
        return false;
    return QTreeWidget::edit(typed ? index.siblingAtColumn(kValueColumn) : index, trigger, event);
}

void PropTree::keyPressEvent(QKeyEvent *event) {
    CZelProp *const prop = Current();
    bool const begins = event->key() == Qt::Key_F2 || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    bool const turnsOver =
        event->key() == Qt::Key_Space && prop != nullptr && prop->GetRule().kind == PropRule::Kind::Boolean;
    // Copies the current value, not the name that the row begins with.
    if (event->matches(QKeySequence::Copy) && prop != nullptr)
        CopyValue();
    else if (prop != nullptr && (begins || turnsOver) && m_list.BeginEdit(*prop))
        event->accept();
    else if (IsTyping(*event) && edit(currentIndex(), AnyKeyPressed, event)) // before signs open and close groups
        event->accept();
    else
        QTreeWidget::keyPressEvent(event);
}

void PropTree::contextMenuEvent(QContextMenuEvent *event) {
    CZelProp *const prop = Current();
    if (prop == nullptr || prop->IsGroup())
        return;
    auto *const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(platform::Shown("&Copy value"), this, &PropTree::CopyValue);
    QAction *const reset = menu->addAction(platform::Shown("&Reset value"), this, [this] {
        if (CZelProp *const current = Current())
            Reset(*current);
    });
    reset->setEnabled(prop->TakesEntries() && prop->IsModified());
    QPoint const below = visualItemRect(prop).bottomLeft();
    menu->popup(event->reason() == QContextMenuEvent::Keyboard ? viewport()->mapToGlobal(below) : event->globalPos());
}

void PropTree::drawRow(QPainter *painter, QStyleOptionViewItem const &option, QModelIndex const &index) const {
    // A shaded group is shaded from edge to edge, under its mark of opening as well.
    if (QVariant const shade = index.data(Qt::BackgroundRole); shade.isValid())
        painter->fillRect(option.rect, shade.value<QBrush>());
    QTreeWidget::drawRow(painter, option, index);
    painter->setPen(palette().color(QPalette::Window).darker(108));
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    if (!isFirstColumnSpanned(index.row(), index.parent())) {
        int const left = columnViewportPosition(kValueColumn);
        int const x = isRightToLeft() ? left + columnWidth(kValueColumn) : left - 1;
        painter->drawLine(x, option.rect.top(), x, option.rect.bottom());
    }
}

void PropTree::closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) {
    bool const next = hint == QAbstractItemDelegate::EditNextItem;
    bool const walks = next || hint == QAbstractItemDelegate::EditPreviousItem;
    QTreeWidget::closeEditor(editor, walks ? QAbstractItemDelegate::NoHint : hint);
    if (walks)
        EditNeighbour(next);
}

void PropTree::EditNeighbour(bool forward) {
    for (QTreeWidgetItem *item = currentItem(); item != nullptr;) {
        item = forward ? itemBelow(item) : itemAbove(item);
        auto *const prop = static_cast<CZelProp *>(item);
        if (prop == nullptr || !prop->TakesEntries())
            continue;
        m_list.SetCurSel(prop);
        if (prop->GetRule().kind != PropRule::Kind::Boolean) // it needs no editor: Space turns it over
            m_list.BeginEdit(*prop);
        return;
    }
}

} // namespace zelvar
