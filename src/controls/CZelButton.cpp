#include "zelvar/controls/CZelButton.h"

#include "zelvar/controls/ButtonContent.h"
#include "zelvar/controls/ControlIcons.h"
#include "zelvar/platform/ui/Pictures.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/Text.h"

#include <QtWidgets/QStyleOptionButton>
#include <QtWidgets/QStylePainter>

namespace zelvar {

CZelButton::CZelButton(QWidget *parent) : QPushButton(parent) {
    setAutoDefault(false);
    setIconSize(QSize(platform::kSmallPicture, platform::kSmallPicture));
}

void CZelButton::SetImage(DString const &name) {
    setIcon(name.empty() ? QIcon() : platform::ResourceIcon(platform::ToQString(name)));
}

void CZelButton::SetImage(HIMAGELIST list, int image) { setIcon(image < 0 ? QIcon() : ListIcon(list, image, image)); }

void CZelButton::SetImageSide(ImageSide side) {
    m_imageSide = side;
    updateGeometry();
    update();
}

void CZelButton::SetAlign(Align align) {
    m_align = align;
    update();
}

void CZelButton::SetTooltip(DString const &text) {
    setToolTip(platform::ToToolTip(platform::ToQString(text)));
    if (this->text().isEmpty())
        setAccessibleName(platform::ToQString(text));
}

DString CZelButton::GetWindowText() const { return platform::ToDString(text()); }
void CZelButton::SetWindowText(DString const &text) { setText(platform::ToQString(text)); }

QSize CZelButton::sizeHint() const {
    QSize const hint = QPushButton::sizeHint();
    if (icon().isNull() || text().isEmpty())
        return hint;
    if (m_imageSide != ImageSide::Above)
        return m_align == Align::Center ? hint : hint + QSize(2 * kContentGap, 0);
    QStyleOptionButton option;
    initStyleOption(&option);
    QSize const words = fontMetrics().size(Qt::TextShowMnemonic, text());
    QSize const content(std::max(words.width(), iconSize().width()),
                        words.height() + kContentGap + iconSize().height());
    return style()->sizeFromContents(QStyle::CT_PushButton, &option, content, this).expandedTo(content);
}

void CZelButton::paintEvent(QPaintEvent *event) {
    if (m_align == Align::Center && m_imageSide == ImageSide::Before && !isFlat()) {
        QPushButton::paintEvent(event);
        return;
    }
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    if (isEnabled() && underMouse())
        option.features &= ~QStyleOptionButton::Flat;
    painter.drawControl(QStyle::CE_PushButtonBevel, option);
    QRect const area = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    int const inset = m_align == Align::Center ? 0 : kContentGap;
    DrawContent(painter, area.adjusted(inset, 0, -inset, 0), option.palette.color(foregroundRole()));
    if (hasFocus()) {
        QStyleOptionFocusRect frame;
        frame.QStyleOption::operator=(option);
        frame.rect = style()->subElementRect(QStyle::SE_PushButtonFocusRect, &option, this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, frame);
    }
}

void CZelButton::DrawContent(QPainter &painter, QRect const &area, QColor const &textColor) const {
    QSize const picture = icon().isNull() ? QSize() : icon().actualSize(iconSize());
    ContentPlaces const places = LayOutContent(area, picture, fontMetrics().size(Qt::TextShowMnemonic, text()),
                                               m_imageSide, m_align, layoutDirection());
    QIcon::Mode const mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
    icon().paint(&painter, places.image, Qt::AlignCenter, mode, isChecked() ? QIcon::On : QIcon::Off);
    painter.setPen(textColor);
    bool const underlines = style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) != 0;
    QString const shown = fontMetrics().elidedText(text(), Qt::ElideRight, places.text.width(), Qt::TextShowMnemonic);
    int const flags = platform::ReadingFlags(text(), Qt::AlignCenter, layoutDirection());
    painter.drawText(places.text, flags | (underlines ? Qt::TextShowMnemonic : Qt::TextHideMnemonic), shown);
}

} // namespace zelvar
