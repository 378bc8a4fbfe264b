#include "zelvar/charts/ChartText.h"

#include "zelvar/charts/core/PlotGeometry.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFontInfo>
#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>

namespace zelvar {

QFont ChartFont(char const *face, int tenthsOfPoint) {
    constexpr int dotsAnInch = 96;
    constexpr int tenthsAnInch = 720;
    QFont font{QString::fromUtf8(face)};
    font.setPixelSize((tenthsOfPoint * dotsAnInch + tenthsAnInch / 2) / tenthsAnInch);
    if (font.family().endsWith(" Narrow") && !QFontInfo(font).family().contains("Narrow")) {
        // Where no narrow face is installed, the wide one is pressed to its width.
        constexpr int narrow = 82; // percent
        font.setFamilies({"Arial", "Liberation Sans"});
        font.setStretch(narrow);
    }
    return font;
}

void DrawLabel(QPainter &painter, DString const &text, Rect const &rect, LabelAlign align, bool clip) {
    int const flags = static_cast<int>(Qt::AlignTop) | static_cast<int>(clip ? Qt::TextWordWrap : Qt::TextDontClip) |
                      static_cast<int>(align == LabelAlign::Right ? Qt::AlignRight : Qt::AlignHCenter);
    QRect const area(rect.left, rect.top, rect.Width(), rect.Height());
    // A text that is wider than its rectangle would begin at the left edge; it is centred all the same.
    QString const shown = platform::ToQString(text);
    if (!clip) {
        painter.drawText(area, flags, shown);
        return;
    }
    painter.save();
    painter.setClipRect(area, Qt::IntersectClip);
    painter.drawText(area, (flags & ~static_cast<int>(Qt::TextWordWrap)) | static_cast<int>(Qt::TextDontClip), shown);
    painter.restore();
}

void DrawRotatedText(QPainter &painter, DString const &text, Rect const &rect, double degrees) {
    QString const shown = platform::ToQString(text);
    QFontMetrics const metrics(painter.font(), painter.device());
    Point const origin = RotatedTextOrigin({metrics.horizontalAdvance(shown), metrics.height()}, rect, degrees);
    painter.save();
    painter.translate(origin.x, origin.y);
    painter.rotate(-degrees);
    painter.drawText(0, 0, shown);
    painter.restore();
}

} // namespace zelvar
