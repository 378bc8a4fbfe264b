#include "zelvar/controls/ControlColors.h"

#include <QtGui/QPalette>

#include <algorithm>
#include <cmath>

namespace zelvar {

namespace {

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

bool UsesHighContrast(QPalette const &palette) {
    QColor const face = palette.color(QPalette::Active, QPalette::Button);
    constexpr double strong = 15;
    return (face == QColor(Qt::black) || face == QColor(Qt::white)) &&
           Contrast(face, palette.color(QPalette::Active, QPalette::ButtonText)) >= strong;
}

} // namespace zelvar
