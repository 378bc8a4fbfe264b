#include "zelvar/platform/ui/PaletteColors.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>

#include <algorithm>
#include <cmath>

namespace zelvar::platform {

namespace {

constexpr double kReadable = 4.5;

/// What the eye makes of a colour, 0 to 1.
double Luminance(QColor const &color) {
    auto const linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

QColor Mixed(QColor const &a, QColor const &b, double share) {
    auto const part = [share](int from, int to) { return static_cast<int>(std::lround(from + (to - from) * share)); };
    return {part(a.red(), b.red()), part(a.green(), b.green()), part(a.blue(), b.blue())};
}

double Contrast(QColor const &a, QColor const &b) {
    auto const [darker, lighter] = std::minmax({Luminance(a), Luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor ReadableOn(QColor const &face) {
    return Contrast(face, Qt::black) >= Contrast(face, Qt::white) ? Qt::black : Qt::white;
}

bool IsPaletteDark() {
    QPalette const palette = QGuiApplication::palette();
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QColor Themed(QColor const &color) {
    QPalette const palette = QGuiApplication::palette();
    QColor const ground = palette.color(QPalette::Base);
    QColor const ink = palette.color(QPalette::Text);
    if (!IsPaletteDark())
        return color;
    // What has no hue takes that of the palette, so that black and white are its own colours.
    float const lightness = color.lightnessF();
    if (color.hslSaturationF() <= 0 || lightness <= 0 || lightness >= 1)
        return Mixed(ink, ground, static_cast<double>(lightness));
    float const turned = ground.lightnessF() + (1 - lightness) * (ink.lightnessF() - ground.lightnessF());
    return QColor::fromHslF(color.hslHueF(), color.hslSaturationF(), std::clamp(turned, 0.0F, 1.0F)).toRgb();
}

QColor ThemedInk(QColor const &color, QColor const &ground) {
    if (!IsPaletteDark() || Contrast(color, ground) >= kReadable)
        return color;
    QColor const ink = Themed(color);
    QColor const end = ReadableOn(ground);
    constexpr int steps = 10;
    for (int step = 0; step < steps; ++step)
        if (QColor const mixed = Mixed(ink, end, static_cast<double>(step) / steps);
            Contrast(mixed, ground) >= kReadable)
            return mixed;
    return end;
}

} // namespace zelvar::platform
