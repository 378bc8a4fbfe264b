#pragma once

#include <QtGui/QColor>

class QPalette;

namespace zelvar {

/// `share` of `b`, from 0 to 1, in `a`.
[[nodiscard]] QColor Mixed(QColor const &a, QColor const &b, double share);
/// From 1, the same, to 21, black on white; texts are read well from 4.5 on.
[[nodiscard]] double Contrast(QColor const &a, QColor const &b);
/// Black or white, whichever is read better on `face`.
[[nodiscard]] QColor ReadableOn(QColor const &face);
/// The desktop's user has asked for strong colours: buttons are pure black or white, and texts the opposite.
[[nodiscard]] bool UsesHighContrast(QPalette const &palette);

} // namespace zelvar
