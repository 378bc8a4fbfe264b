#pragma once

#include <QtWidgets/QStyledItemDelegate>

namespace zelvar {

/// Draws the cells of a list of files: names, sizes and dates are read from the left in every window.
class NameDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const override;
};

} // namespace zelvar
