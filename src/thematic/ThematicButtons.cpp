#include "zelvar/thematic/ThematicButtons.h"

#include "zelvar/platform/ui/PaletteColors.h"
#include "zelvar/platform/ui/Reading.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFont>
#include <QtGui/QFontMetrics>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>

#include <array>

namespace zelvar {

namespace {

QFont LinkFont(bool underlined) {
    QFont font = QGuiApplication::font();
    font.setUnderline(underlined);
    return font;
}

/// One picture of the strip: a triangle, darker the more the mouse has to do with it.
void DrawArrow(QPainter &painter, Point at, bool up, int state) {
    static constexpr std::array<QRgb, 3> colors{qRgb(96, 96, 96), qRgb(0, 90, 200), qRgb(0, 40, 110)};
    constexpr double width = ThematicBitmapButton::sizeImage.cx;
    constexpr double height = ThematicBitmapButton::sizeImage.cy;
    double const base = up ? height - 1.5 : 1.5;
    double const tip = up ? 1.5 : height - 1.5;
    QPointF const corners[] = {
        {at.x + 0.5, at.y + base}, {at.x + width - 0.5, at.y + base}, {at.x + width / 2, at.y + tip}};
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(platform::ThemedInk(colors[static_cast<std::size_t>(state)], platform::Themed(kItemGrey)));
    painter.drawPolygon(corners, 3);
    painter.restore();
}

} // namespace

bool ThematicButtonBase::MouseEvent(EMouseEvnt event, Point const &point) {
    int const former = m_state;
    bool const inside = GetRect().Contains(point);
    switch (event) {
    case MouseEvntMove:
        if (!inside)
            m_state &= ~kHovered;
        else if (IsAvailable())
            m_state |= kHovered;
        break;
    case MouseEvntLDown:
        if (inside && IsAvailable())
            m_state |= kPressed;
        break;
    case MouseEvntLUp:
    case MouseEvntLeave:
        m_state = 0;
        break;
    }
    return m_state != former;
}

int ThematicBitmapButton::GetShownIndex() const {
    return m_bitmapIndex + ((GetState() & kPressed) != 0 ? 2 : (GetState() & kHovered) != 0 ? 1 : 0);
}

void ThematicBitmapButton::Draw(QPainter &painter, bool) const {
    constexpr int pictures = 6;
    constexpr int states = 3;
    int const index = GetShownIndex();
    if (IsAvailable() && index < pictures)
        DrawArrow(painter, {GetRect().left, GetRect().top}, index >= states, index % states);
}

QFont const &ThematicHyperlink::GetFont() const {
    static QFont const link = LinkFont(true);
    static QFont const text = LinkFont(false);
    return IsEnabled() ? link : text;
}

void ThematicHyperlink::Draw(QPainter &painter, bool) const {
    if (!IsValid())
        return;
    QRect const area(GetRect().left, GetRect().top, GetRect().Width(), GetRect().Height());
    painter.save();
    painter.setFont(GetFont());
    if (IsEnabled())
        painter.setPen(
            platform::ThemedInk(QColor(0, 0, 255), platform::ToQColor(platform::SystemColor(COLOR_BTNFACE))));
    else
        painter.setPen(platform::ToQColor(platform::SystemColor(COLOR_BTNTEXT)));
    QString const text = platform::ToQString(m_text);
    painter.drawText(area,
                     platform::ReadingFlags(text, Qt::AlignCenter, painter.layoutDirection()) | Qt::TextSingleLine,
                     QFontMetrics(GetFont()).elidedText(text, Qt::ElideRight, area.width()));
    painter.restore();
}

ThematicButton::ThematicButton() : m_shadowColor(platform::SystemColor(COLOR_WINDOW)) {}

void ThematicButton::Draw(QPainter &painter, bool) const {
    if (!IsAvailable())
        return;
    bool const hovered = (GetState() & kHovered) != 0;
    bool const pressed = (GetState() & kPressed) != 0;
    Rect r = GetRect();
    Rect const shifted{r.left + 1, r.top + 1, r.right + 1, r.bottom + 1};
    // The outline lies inside the rectangle.
    auto const circle = [](Rect const &rect) {
        return QRectF(rect.left + 0.5, rect.top + 0.5, rect.Width() - 1.0, rect.Height() - 1.0);
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPen const outline = painter.pen();
    if (hovered && !pressed) {
        painter.setPen(QPen(platform::ToQColor(m_shadowColor), 1));
        painter.setBrush(platform::ToQColor(m_shadowColor));
        painter.drawEllipse(circle(shifted));
    } else if (hovered) {
        r = shifted;
    }
    painter.setPen(outline);
    QColor const face =
        platform::ToQColor(platform::SystemColor(hovered || pressed ? COLOR_3DHIGHLIGHT : COLOR_BTNFACE));
    QColor const bars = platform::ThemedInk(Qt::black, face);
    painter.setBrush(face);
    painter.drawEllipse(circle(r));
    int const cx = (r.left + r.right) / 2;
    int const cy = (r.top + r.bottom) / 2;
    int const d = r.Width() / 4;
    painter.fillRect(cx - d, cy - 1, 2 * d, 2, bars);
    if (m_addButton)
        painter.fillRect(cx - 1, cy - d, 2, 2 * d, bars);
    painter.restore();
}

} // namespace zelvar
