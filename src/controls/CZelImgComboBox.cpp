#include "zelvar/controls/CZelImgComboBox.h"

#include "zelvar/controls/ControlIcons.h"

#include <QtWidgets/QStyleOptionComboBox>
#include <QtWidgets/QStylePainter>
#include <QtWidgets/QStyledItemDelegate>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kIndent = 10;      // pixels a step
constexpr int kLeastLength = 12; // characters of the field
constexpr int kImageRole = Qt::UserRole + 10;
constexpr int kSelectedImageRole = Qt::UserRole + 11;
constexpr int kIndentRole = Qt::UserRole + 12;

/// Gives the picture more room in front; the icon keeps to the end of it.
class IndentingDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, QModelIndex const &index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->decorationSize = static_cast<QComboBox const *>(parent())->iconSize();
        option->decorationSize.rwidth() += kIndent * index.data(kIndentRole).toInt();
        bool const mirrored = option->direction == Qt::RightToLeft;
        option->decorationAlignment =
            (mirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignAbsolute | Qt::AlignVCenter;
    }
};

} // namespace

CZelImgComboBox::CZelImgComboBox(QWidget *parent) : CZelComboBox(parent) {
    setMinimumContentsLength(kLeastLength);
    setItemDelegate(new IndentingDelegate(this));
    SetImageList(nullptr);
}

void CZelImgComboBox::SetImageList(HIMAGELIST list, int side) {
    m_list = list;
    setIconSize(QSize(side, side));
    for (int index = 0; index < count(); ++index)
        UpdateIcon(index);
}

int CZelImgComboBox::InsertString(int index, DString const &text, int image, int selectedImage, int indent) {
    int const at = CZelComboBox::InsertString(index, text);
    SetItemImage(at, image, selectedImage);
    SetItemIndent(at, indent);
    return at;
}

bool CZelImgComboBox::SetItemImage(int index, int image, int selectedImage) {
    if (index < 0 || index >= count())
        return false;
    setItemData(index, std::max(image, -1), kImageRole);
    setItemData(index, selectedImage < 0 ? std::max(image, -1) : selectedImage, kSelectedImageRole);
    UpdateIcon(index);
    return true;
}

int CZelImgComboBox::GetItemImage(int index) const {
    QVariant const image = itemData(index, kImageRole);
    return image.isValid() ? image.toInt() : -1;
}

int CZelImgComboBox::GetItemSelectedImage(int index) const {
    QVariant const image = itemData(index, kSelectedImageRole);
    return image.isValid() ? image.toInt() : -1;
}

bool CZelImgComboBox::SetItemIndent(int index, int indent) {
    if (index < 0 || index >= count())
        return false;
    setItemData(index, std::max(indent, 0), kIndentRole);
    return true;
}

int CZelImgComboBox::GetItemIndent(int index) const {
    return index < 0 || index >= count() ? -1 : itemData(index, kIndentRole).toInt();
}

void CZelImgComboBox::UpdateIcon(int index) {
    setItemIcon(index, ListIcon(m_list, GetItemImage(index), GetItemSelectedImage(index)));
}

void CZelImgComboBox::paintEvent(QPaintEvent *) {
    QStylePainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    QStyleOptionComboBox option;
    initStyleOption(&option);
    int const shown = GetItemSelectedImage(currentIndex());
    option.currentIcon = currentIndex() < 0 ? QIcon() : ListIcon(m_list, shown, shown);
    if (currentIndex() < 0 && !isEditable() && !placeholderText().isEmpty()) {
        option.palette.setBrush(QPalette::ButtonText, option.palette.placeholderText());
        option.currentText = placeholderText();
    }
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

} // namespace zelvar
