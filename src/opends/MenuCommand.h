#pragma once

#include "zelvar/base/DString.h"

#include <QtCore/QPoint>

#include <functional>
#include <optional>
#include <vector>

class QWidget;

namespace zelvar {

/// A line of a menu that several parts of a dialog put together.
struct MenuCommand {
    DString words{}; ///< in the user's language; behind a tab its key
    std::function<void()> run{};
    bool isEnabled = true;
    std::optional<bool> isChecked{}; ///< nothing for a line that has no mark
    bool beginsGroup = false;        ///< a line stands above it
};

/// Shows the menu of the window there and runs what is chosen, once the menu is gone.
void RunMenu(QWidget &window, QPoint screenPoint, std::vector<MenuCommand> const &commands);

} // namespace zelvar
