#include "zelvar/controls/ControlColors.h"

#include "zelvar/platform/ui/PaletteColors.h"

#include <QtGui/QPalette>

namespace zelvar {

bool UsesHighContrast(QPalette const &palette) {
    QColor const face = palette.color(QPalette::Active, QPalette::Button);
    constexpr double strong = 15;
    return (face == QColor(Qt::black) || face == QColor(Qt::white)) &&
           platform::Contrast(face, palette.color(QPalette::Active, QPalette::ButtonText)) >= strong;
}

} // namespace zelvar
