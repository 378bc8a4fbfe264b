#pragma once

#include <QtGui/QKeyEvent>

namespace zelvar {

/// A text that a list or a tree takes itself, so that no shortcut of the application gets it.
[[nodiscard]] inline bool TypesText(QKeyEvent const &event) {
    bool const command = (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    return !command && !event.text().isEmpty() && event.text().at(0).isPrint();
}

} // namespace zelvar
