#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/ImageList.h"

#include <QtGui/QIcon>

namespace zelvar {

/// Picture of an image list, sharp at any pixel ratio; another one where it is selected; washed out while disabled. An
/// index outside the list shows nothing but keeps its room. The list, which may be null, must outlive the icon.
[[nodiscard]] QIcon ListIcon(HIMAGELIST list, int image, int selectedImage);

/// A box in a colour with a thin border that is seen on any background; fainter while disabled.
[[nodiscard]] QIcon SwatchIcon(ColorRef color);

/// As the style shows a disabled picture.
[[nodiscard]] QPixmap WashedOut(QPixmap const &picture);

} // namespace zelvar
