#include "zelvar/drawing/DrawTextBlock.h"

#include "zelvar/drawing/core/TextBlockRule.h"
#include "zelvar/platform/ui/SystemColor.h"
#include "zelvar/platform/ui/Text.h"

#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kFarEdge = 1000; // the right and the bottom of the text's rectangle, whatever its corner
constexpr int kNormalWeight = 400;

/// A font whose lines are `height` pixels high; below 0 the letters alone are. 0 is the usual height.
QFont MakeFont(char const *face, int height, int weight) {
    QFont font;
    if (face != nullptr && *face != '\0')
        font.setFamily(platform::ToQString(face));
    font.setWeight(static_cast<QFont::Weight>(std::clamp(weight == 0 ? kNormalWeight : weight, 1, 1000)));
    if (height != 0)
        font.setPixelSize(std::min(std::abs(height), kFarEdge));
    if (height > 0) {
        int const lineHeight = std::max(QFontMetrics(font).height(), 1);
        font.setPixelSize(std::max(font.pixelSize() * font.pixelSize() / lineHeight, 1));
    }
    return font;
}

void DrawLines(QPainter &dc, CnfgLdr::TextBlock const &block, int lineHeight) {
    int y = block.y;
    for (DString const &line : Split(block.text, '\n')) {
        QRect const place(block.x, y, std::max(kFarEdge - block.x, 0), lineHeight);
        QString text = platform::ToQString(line);
        if (text.endsWith('\r'))
            text.chop(1);
        dc.drawText(place, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine | Qt::TextShowMnemonic | Qt::TextDontClip,
                    text);
        y += lineHeight;
    }
}

/// The left upper corner of each sign.
std::vector<QPoint> PlaceSigns(CnfgLdr::TextBlock const &block, QFontMetrics const &text, QFontMetrics const &sign) {
    std::vector<QPoint> places;
    for (ProductNameHit const &hit : FindProductName(block.text)) {
        QString const line =
            platform::ToQString(std::string_view(block.text).substr(hit.lineBegin, hit.end - hit.lineBegin));
        int const back = text.horizontalAdvance(line.right(1)) / 4;
        places.emplace_back(block.x + text.horizontalAdvance(line) - back,
                            block.y + text.height() * hit.line - sign.height() / 4);
    }
    return places;
}

} // namespace

void DrawTextBlock(QPainter *dc, CnfgLdr::TextBlock const &block) {
    if (dc == nullptr)
        return;
    dc->save();
    dc->setLayoutDirection(Qt::LeftToRight); // the block gives the left upper corner
    dc->setBackgroundMode(Qt::TransparentMode);
    dc->setPen(platform::ToQColor(block.color));
    QFont const textFont = MakeFont(block.font, block.size, block.weight);
    QFontMetrics const textMetrics(textFont, dc->device());
    dc->setFont(textFont);
    dc->save();
    dc->setClipRect(QRect(QPoint(block.x, block.y), QPoint(kFarEdge - 1, kFarEdge - 1)), Qt::IntersectClip);
    DrawLines(*dc, block, textMetrics.height());
    dc->restore();

    SignFont const signRule = SignFontFor(block.size, block.weight);
    QFont const signFont = MakeFont(block.font, signRule.height, signRule.weight);
    QFontMetrics const signMetrics(signFont, dc->device());
    dc->setFont(signFont);
    for (QPoint const &place : PlaceSigns(block, textMetrics, signMetrics))
        dc->drawText(place.x(), place.y() + signMetrics.ascent(), QStringLiteral(u"\u00AE"));
    dc->restore();
}

} // namespace zelvar
