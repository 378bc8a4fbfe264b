#include "zelvar/controls/ColorStatic.h"

#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QPainter>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kPadding = 3;     // pixels between the edge and the text of a coloured label
constexpr double kFaded = 0.55; // of the background in a disabled text

} // namespace

ColorStatic::ColorStatic(QWidget *parent) : QLabel(parent) { setTextFormat(Qt::PlainText); }

DString ColorStatic::GetWindowText() const { return platform::ToDString(text()); }
void ColorStatic::SetWindowText(DString const &text) { setText(platform::ToQString(text)); }

void ColorStatic::SetColor(QPalette::ColorRole role, ColorRef color) {
    QPalette colors = palette();
    colors.setColor(QPalette::Active, role, platform::ToQColor(color));
    colors.setColor(QPalette::Inactive, role, platform::ToQColor(color));
    QColor const back = colors.color(QPalette::Active, QPalette::Window);
    QColor const text = colors.color(QPalette::Active, QPalette::WindowText);
    colors.setColor(QPalette::Disabled, QPalette::Window, back);
    colors.setColor(QPalette::Disabled, QPalette::WindowText, platform::Mixed(text, back, kFaded));
    setPalette(colors);
}

void ColorStatic::SetTextColor(ColorRef color) { SetColor(QPalette::WindowText, color); }

void ColorStatic::SetBkColor(ColorRef color) {
    SetColor(QPalette::Window, color);
    setAutoFillBackground(true);
    setMargin(m_borderWidth + kPadding);
}

ColorRef ColorStatic::GetTextColor() const {
    return platform::ToColorRef(palette().color(QPalette::Active, QPalette::WindowText));
}

ColorRef ColorStatic::GetBkColor() const {
    return platform::ToColorRef(palette().color(QPalette::Active, QPalette::Window));
}

void ColorStatic::SetBorder(ColorRef color, int width) {
    m_border = platform::ToQColor(color);
    m_borderWidth = std::max(0, width);
    setMargin(m_borderWidth + kPadding);
    update();
}

void ColorStatic::ResetColors() {
    setPalette(QPalette());
    setAutoFillBackground(false);
    m_borderWidth = 0;
    setMargin(0);
    update();
}

void ColorStatic::paintEvent(QPaintEvent *event) {
    if (m_borderWidth > 0) {
        QPainter painter(this);
        QColor const color =
            isEnabled() ? m_border : platform::Mixed(m_border, palette().color(QPalette::Window), kFaded);
        QRect const inside = rect().adjusted(m_borderWidth, m_borderWidth, -m_borderWidth, -m_borderWidth);
        for (QRect const &edge : QRegion(rect()).subtracted(inside))
            painter.fillRect(edge, color);
    }
    QLabel::paintEvent(event);
}

} // namespace zelvar
