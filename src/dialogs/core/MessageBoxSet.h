#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/dialogs/core/MessageBoxFlags.h"

#include <cstdint>
#include <span>

namespace zelvar {

struct MessageBoxButton {
    char const *text = ""; ///< with its mnemonic
    std::uint16_t id = 0;
    int width = 70; ///< pixels at a font of 12 pixels
};

/// The buttons of a message box, left to right.
struct MessageBoxSet {
    std::span<MessageBoxButton const> buttons{};
    int counted = 0; ///< buttons that the width of their row is made for
    int extra = 0;   ///< pixels that the row is wider than so many usual buttons
    bool allowsCancel = false;
};

/// The set of a message box's flags. Those that there are not show "OK", in a row made for no button.
[[nodiscard]] ZELVAR_API MessageBoxSet SetOfMessageBox(unsigned type);

} // namespace zelvar
