#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/Export.h"

#include <QtGui/QColor>

namespace zelvar::platform {

[[nodiscard]] inline QColor ToQColor(ColorRef color) {
    return {static_cast<int>(RedOf(color)), static_cast<int>(GreenOf(color)), static_cast<int>(BlueOf(color))};
}

/// Alpha is dropped.
[[nodiscard]] inline ColorRef ToColorRef(QColor const &color) {
    return Rgb(static_cast<unsigned>(color.red()), static_cast<unsigned>(color.green()),
               static_cast<unsigned>(color.blue()));
}

/// The desktop's present colour for one of the numbers of `SystemColorIndex`; black for any other number.
[[nodiscard]] ZELVAR_API ColorRef SystemColor(int index);

} // namespace zelvar::platform
