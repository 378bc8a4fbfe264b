#pragma once

#include "zelvar/base/DString.h"

class QWidget;

namespace zelvar {

/// The platform's own message box, with those of `MessageBoxFlags` that it knows. The button's id.
int PlainMessageBox(QWidget *parent, DString const &text, DString const &caption, unsigned type);

} // namespace zelvar
