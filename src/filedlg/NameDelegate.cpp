#include "zelvar/filedlg/NameDelegate.h"

#include "zelvar/platform/ui/Reading.h"

namespace zelvar {

void NameDelegate::initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->text = platform::Isolated(option->text, option->direction, platform::Reading::LeftToRight);
}

} // namespace zelvar
