#include "zelvar/controls/CZelCustomButton.h"

#include "zelvar/controls/ControlColors.h"
#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/SystemColor.h"

#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStyleOptionButton>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kPadding = 4;   // pixels between border and content
constexpr int kLighter = 108; // percent
constexpr int kDarker = 118;
constexpr double kFaded = 0.65; // of the window's colour in a disabled face

} // namespace

CZelCustomButton::CZelCustomButton(QWidget *parent) : CZelButton(parent) { setAttribute(Qt::WA_Hover); }

void CZelCustomButton::SetColors(State state, ColorRef top, ColorRef bottom) {
    m_faces[state] = Gradient{.top = platform::ToQColor(top), .bottom = platform::ToQColor(bottom)};
    update();
}

void CZelCustomButton::SetFaceColor(ColorRef top, ColorRef bottom) { SetColors(kNormal, top, bottom); }
void CZelCustomButton::SetHoverColor(ColorRef top, ColorRef bottom) { SetColors(kHover, top, bottom); }
void CZelCustomButton::SetPressedColor(ColorRef top, ColorRef bottom) { SetColors(kPressed, top, bottom); }

void CZelCustomButton::SetGradientVertical(bool vertical) {
    m_vertical = vertical;
    update();
}

void CZelCustomButton::SetTextColor(ColorRef color) {
    m_text = platform::ToQColor(color);
    update();
}

void CZelCustomButton::SetTextHoverColor(ColorRef color) {
    m_hoverText = platform::ToQColor(color);
    update();
}

void CZelCustomButton::SetBorder(ColorRef color, int width) {
    m_border = platform::ToQColor(color);
    m_borderWidth = std::max(0, width);
    updateGeometry();
    update();
}

void CZelCustomButton::SetRadius(int pixels) {
    m_radius = std::max(0, pixels);
    update();
}

void CZelCustomButton::ResetColors() {
    m_faces = {};
    m_text.reset();
    m_hoverText.reset();
    m_border.reset();
    update();
}

QSize CZelCustomButton::sizeHint() const {
    // The style's own margins are narrower than border and padding.
    int const frame = 2 * (m_borderWidth + kPadding);
    return CZelButton::sizeHint() + QSize(frame, 2 * std::max(0, m_borderWidth - 1));
}

CZelCustomButton::State CZelCustomButton::PresentState() const {
    if (isDown() || isChecked())
        return kPressed;
    return underMouse() ? kHover : kNormal;
}

CZelCustomButton::Face CZelCustomButton::ChosenFace(State state) const {
    QColor const plain = palette().color(QPalette::Active, QPalette::Button);
    Gradient const normal = m_faces[kNormal].value_or(Gradient{.top = plain.lighter(105), .bottom = plain});
    Gradient shown = m_faces[state].value_or(normal);
    if (!m_faces[state] && state == kHover)
        shown = {.top = normal.top.lighter(kLighter), .bottom = normal.bottom.lighter(kLighter)};
    else if (!m_faces[state] && state == kPressed) // from below, as if pushed in
        shown = {.top = normal.bottom.darker(kDarker), .bottom = normal.top.darker(kDarker)};
    QColor const middle = platform::Mixed(shown.top, shown.bottom, 0.5);
    bool const hovered = state == kHover && m_hoverText;
    return {.top = shown.top,
            .bottom = shown.bottom,
            .text = hovered ? *m_hoverText : m_text.value_or(platform::ReadableOn(middle)),
            .border = m_border.value_or(middle.darker(150))};
}

CZelCustomButton::Face CZelCustomButton::PresentFace() const {
    QPalette const &colors = palette();
    if (UsesHighContrast(colors)) {
        bool const strong = isEnabled() && PresentState() != kNormal;
        QColor const face = colors.color(strong ? QPalette::Highlight : QPalette::Button);
        QColor const text = colors.color(strong ? QPalette::HighlightedText : QPalette::ButtonText);
        return {.top = face, .bottom = face, .text = text, .border = text};
    }
    if (isEnabled())
        return ChosenFace(PresentState());
    QColor const window = colors.color(QPalette::Window);
    Face face = ChosenFace(isChecked() ? kPressed : kNormal);
    face.top = platform::Mixed(face.top, window, kFaded);
    face.bottom = platform::Mixed(face.bottom, window, kFaded);
    face.border = platform::Mixed(face.border, window, kFaded);
    QColor const middle = platform::Mixed(face.top, face.bottom, 0.5);
    face.text = platform::Mixed(middle, platform::ReadableOn(middle), 0.55);
    return face;
}

void CZelCustomButton::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    Face const face = PresentFace();
    QRectF const bounds(rect());
    QLinearGradient gradient(bounds.topLeft(), m_vertical ? bounds.bottomLeft() : bounds.topRight());
    gradient.setColorAt(0, face.top);
    gradient.setColorAt(1, face.bottom);
    double const half = m_borderWidth / 2.0;
    painter.setBrush(gradient);
    painter.setPen(m_borderWidth == 0 ? QPen(Qt::NoPen) : QPen(face.border, m_borderWidth));
    double const radius = std::min<double>(m_radius, std::min(width(), height()) / 2.0);
    painter.drawRoundedRect(bounds.adjusted(half, half, -half, -half), radius, radius);
    if (hasFocus()) {
        double const inset = m_borderWidth + 1.5;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(face.text, 1, Qt::DotLine));
        painter.drawRoundedRect(bounds.adjusted(inset, inset, -inset, -inset), radius / 2, radius / 2);
    }
    int const pushed = PresentState() == kPressed ? 1 : 0;
    int const inset = m_borderWidth + kPadding;
    DrawContent(painter, rect().adjusted(inset, m_borderWidth, -inset, -m_borderWidth).translated(pushed, pushed),
                face.text);
}

} // namespace zelvar
