#include "zelvar/opends/ValueScale.h"

#include "zelvar/platform/ui/Text.h"

#include <QtCore/QStringList>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace zelvar {

namespace {

constexpr int kGap = 2;         // pixels between the strip and its texts
constexpr int kMarkWidth = 3;   // pixels, the middle one dark
constexpr int kColors = 3;      // strips, one above the other
constexpr int kLeastStrip = 6;  // pixels
constexpr int kBetween = 8;     // pixels between texts
constexpr int kFewestChars = 8; // that it shrinks to

QString RangeText(ValuePlane::Range const &range) {
    return platform::Shown("%1 to %2").arg(ValueText(range.min), ValueText(range.max));
}

/// 0 for black, 1 for white.
double Brightness(double value, ValuePlane::Range const &shown) {
    if (shown.max - shown.min > 0)
        return std::clamp((value - shown.min) / (shown.max - shown.min), 0.0, 1.0);
    return value < shown.min ? 0 : 1;
}

} // namespace

QString ValueText(double value) {
    constexpr double kExactUpTo = 1e15;
    bool const isWhole = value == std::floor(value) && std::abs(value) < kExactUpTo;
    return isWhole ? QString::number(value, 'f', 0) : QString::number(value, 'g', 6);
}

ValueScale::ValueScale(QWidget *parent) : QWidget(parent) {
    setAccessibleName(platform::Shown("Values"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ValueScale::Show(PreviewValues values) {
    m_values = std::move(values);
    m_range.reset();
    m_pointed.clear();
    m_pointedText.clear();
    for (ValuePlane const &plane : m_values.planes)
        if (plane.Values())
            m_range = m_range ? ValuePlane::Range{std::min(m_range->min, plane.Values()->min),
                                                  std::max(m_range->max, plane.Values()->max)}
                              : *plane.Values();
    Describe();
    update();
}

void ValueScale::Describe() {
    QStringList lines;
    for (ValuePlane const &plane : m_values.planes) {
        QString const values = plane.Values() ? RangeText(*plane.Values()) : platform::Shown("no data");
        lines += platform::Shown("Channel %1: %2").arg(plane.Channel() + 1).arg(values);
    }
    setToolTip(lines.isEmpty() ? QString() : platform::ToToolTip(lines.join(u'\n')));
    setAccessibleDescription(lines.join(u'\n'));
}

void ValueScale::PointAt(double x, double y) {
    m_pointed.clear();
    if (std::optional<std::size_t> const at = m_values.IndexAt(x, y))
        for (ValuePlane const &plane : m_values.planes)
            m_pointed.push_back(plane.At(*at));
    QStringList texts;
    bool isAny = false;
    for (std::optional<double> const &value : m_pointed) {
        texts += value ? ValueText(*value) : QString(QChar(0x2013)); // a dash
        isAny = isAny || value;
    }
    m_pointedText = isAny || m_pointed.empty() ? texts.join(QStringLiteral("  ")) : platform::Shown("no data");
    update();
}

int ValueScale::StripHeight() const {
    return std::max(kLeastStrip, fontMetrics().height() * 2 / 3) / kColors * kColors;
}

QSize ValueScale::sizeHint() const {
    constexpr int chars = 20;
    return {fontMetrics().averageCharWidth() * chars, minimumSizeHint().height()};
}

QSize ValueScale::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * kFewestChars, StripHeight() + 2 + kGap + fontMetrics().height()};
}

void ValueScale::PaintStrip(QPainter &painter, QRect const &strip, std::size_t plane) const {
    ValuePlane::Range const &shown = m_values.planes[plane].Shown();
    bool const isGrey = m_values.planes.size() == 1;
    double const span = m_range->max - m_range->min;
    auto const colorAt = [&](int x) {
        double const value = m_range->min + span * (x + 0.5) / strip.width();
        int const byte = static_cast<int>(std::lround(255 * Brightness(value, shown)));
        return isGrey ? QColor(byte, byte, byte)
                      : QColor(plane == 0 ? byte : 0, plane == 1 ? byte : 0, plane == 2 ? byte : 0);
    };
    for (int x = 0; x < strip.width(); ++x)
        painter.fillRect(QRect(strip.x() + x, strip.y(), 1, strip.height()), colorAt(x));
    if (plane >= m_pointed.size() || !m_pointed[plane])
        return;
    double const place = span > 0 ? (*m_pointed[plane] - m_range->min) / span : 0;
    int const x = strip.x() + static_cast<int>(std::lround(place * (strip.width() - 1)));
    painter.fillRect(QRect(x - 1, strip.y(), kMarkWidth, strip.height()), Qt::white);
    painter.fillRect(QRect(x, strip.y(), 1, strip.height()), Qt::black);
}

void ValueScale::PaintTexts(QPainter &painter, QRect const &line) const {
    QFontMetrics const metrics = fontMetrics();
    QString const least = m_range ? ValueText(m_range->min) : QString();
    QString const most = m_range ? ValueText(m_range->max) : QString();
    int const side = std::max(metrics.horizontalAdvance(least), metrics.horizontalAdvance(most)) + kBetween;
    painter.setPen(palette().color(QPalette::WindowText));
    // Where not all have room, the one under the pointer is what is looked for.
    bool const fits = m_pointedText.isEmpty() || metrics.horizontalAdvance(m_pointedText) + 2 * side <= line.width();
    painter.drawText(line, Qt::AlignCenter | Qt::TextSingleLine,
                     metrics.elidedText(m_pointedText, Qt::ElideRight, line.width()));
    if (!fits)
        return;
    // A scale runs from the left whatever the direction of texts.
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, least);
    painter.drawText(line, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, most);
}

void ValueScale::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    painter.setLayoutDirection(Qt::LeftToRight);
    int const height = StripHeight();
    PaintTexts(painter, QRect(0, height + 2 + kGap, width(), fontMetrics().height()));
    if (!m_range || m_values.isPalette)
        return;
    auto const planes = static_cast<int>(m_values.planes.size());
    for (int i = 0; i < planes; ++i)
        PaintStrip(painter, QRect(1, 1 + i * height / planes, width() - 2, height / planes),
                   static_cast<std::size_t>(i));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(0, 0, width() - 1, height + 1);
}

} // namespace zelvar
