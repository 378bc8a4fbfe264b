#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/Export.h"

namespace zelvar {

/// Colours of rows that follow the desktop's palette. On a dark one the fixed colours of the row styles are shown dark,
/// with their hue.
struct RowPalette {
    ColorRef text = 0;
    ColorRef grey = 0; ///< is read well on every ground below
    ColorRef window = 0;
    ColorRef shaded = 0;
    ColorRef accent = 0;
    ColorRef greyShaded = 0;

    /// Those of the present palette.
    [[nodiscard]] static RowPalette Current();
    /// What a row's colours of this palette are in another; any other colour stays.
    [[nodiscard]] ColorRef TextIn(RowPalette const &other, ColorRef color) const;
    [[nodiscard]] ColorRef BackIn(RowPalette const &other, ColorRef color) const;
};

} // namespace zelvar
