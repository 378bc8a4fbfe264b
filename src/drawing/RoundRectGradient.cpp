#include "zelvar/drawing/RoundRectGradient.h"

#include "zelvar/platform/ui/SystemColor.h"

#include <QtGui/QLinearGradient>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>

namespace zelvar {

namespace {

QPainterPath Outline(Rect const &rect, int radius) {
    qreal const left = rect.left;
    qreal const top = rect.top;
    qreal const right = rect.right;
    qreal const bottom = rect.bottom;
    qreal const r = radius > 0 ? radius : 0;
    qreal const d = 2 * r;
    QPainterPath path;
    if (r == 0) {
        path.addRect(left, top, right - left, bottom - top); // an arc without a box would leave its corner out
        return path;
    }
    path.moveTo(left, bottom - r);
    path.lineTo(left, top + r);
    // Angles count against the clock here, with it in the design: quarter circles from 180, 270, 0 and 90 degrees on.
    path.arcTo(QRectF(left, top, d, d), 180, -90);
    // Arcs join the end of the line before them by themselves. A point within an edge would show: lines to it and from
    // it are smoothed apart.
    path.arcTo(QRectF(right - d, top, d, d), 90, -90);
    path.arcTo(QRectF(right - d, bottom - d, d, d), 0, -90);
    path.arcTo(QRectF(left, bottom - d, d, d), 270, -90);
    path.closeSubpath();
    return path;
}

} // namespace

void RoundRectGradient(QPainter *dc, Rect rect, int radius, ColorRef startColor, ColorRef endColor, bool vertical,
                       int borderWidth, ColorRef borderColor) {
    --rect.right;
    if (dc == nullptr || rect.IsEmpty())
        return;
    QPainterPath const outline = Outline(rect, radius);
    QLinearGradient gradient(rect.left, rect.top, vertical ? rect.left : rect.right, vertical ? rect.bottom : rect.top);
    gradient.setSpread(QGradient::RepeatSpread);
    gradient.setColorAt(0, platform::ToQColor(startColor));
    gradient.setColorAt(1, platform::ToQColor(endColor));
    dc->save();
    dc->setRenderHint(QPainter::Antialiasing);
    dc->fillPath(outline, gradient);
    if (borderWidth > 0) {
        // The outline runs through the middle of pixels: a line of odd width covers them whole.
        qreal const toMiddle = borderWidth % 2 == 1 ? 0.5 : 0;
        dc->translate(toMiddle, toMiddle);
        dc->setBrush(Qt::NoBrush);
        dc->setPen(QPen(platform::ToQColor(borderColor), borderWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
        dc->drawPath(outline);
    }
    dc->restore();
}

} // namespace zelvar
