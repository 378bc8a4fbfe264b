#pragma once

#include "zelvar/base/Export.h"

class QWidget;

namespace zelvar::platform {

/// For boxes and number fields that stand where something scrolls: the wheel turns them only while they have the focus,
/// and goes to what is around them otherwise. Who scrolls a page does not change what is on it.
ZELVAR_API void LetWheelPast(QWidget &control);

} // namespace zelvar::platform
