#include "zelvar/charts/ChartText.h"

#include "zelvar/charts/core/PlotGeometry.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFontInfo>
#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>

#include <algorithm>

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

namespace {

/// A label as it is drawn: one that is wider than the picture ends with an ellipsis.
struct PlacedLabel {
    QString text;
    QRect place;
};

constexpr int kEdge = 3; // pixels that the frame has to itself

PlacedLabel Placed(QPainter &painter, DString const &text, Rect const &rect, LabelAlign align) {
    QFontMetrics const metrics(painter.font(), painter.device());
    auto const picture = static_cast<int>(painter.device()->width() / painter.device()->devicePixelRatioF());
    QString shown = metrics.elidedText(platform::ToQString(text), Qt::ElideRight, picture);
    int const width = metrics.horizontalAdvance(shown);
    int const left = align == LabelAlign::Right ? rect.right - width : rect.left + (rect.Width() - width) / 2;
    return {std::move(shown),
            {std::max(0, std::min(left, picture - width - kEdge)), rect.top, width, metrics.height()}};
}

void Draw(QPainter &painter, PlacedLabel const &label) {
    painter.drawText(label.place,
                     static_cast<int>(Qt::AlignLeft | Qt::AlignTop) | Qt::TextSingleLine | Qt::TextDontClip,
                     label.text);
}

} // namespace

void DrawLabel(QPainter &painter, DString const &text, Rect const &rect, LabelAlign align) {
    Draw(painter, Placed(painter, text, rect, align));
}

void DrawLabelRow(QPainter &painter, std::span<std::pair<DString, Rect> const> labels) {
    if (labels.empty())
        return;
    PlacedLabel const last = Placed(painter, labels.back().first, labels.back().second, LabelAlign::Center);
    Draw(painter, last);
    QRect former;
    for (auto const &[text, rect] : labels.first(labels.size() - 1)) {
        PlacedLabel const label = Placed(painter, text, rect, LabelAlign::Center);
        if (label.place.intersects(former) || label.place.intersects(last.place))
            continue;
        Draw(painter, label);
        former = label.place;
    }
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
