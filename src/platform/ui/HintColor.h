#pragma once

class QWidget;

namespace zelvar::platform {

/// Keeps the hints in the fields that are in `widget`, or are it, readable while it lives: desktops with dark palettes
/// leave their colour as it is on light ones. User-interface thread.
void KeepHintsReadable(QWidget &widget);

} // namespace zelvar::platform
