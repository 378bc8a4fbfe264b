#pragma once

#include "zelvar/base/Export.h"

namespace zelvar {

/// Keys by their customary numbers. Digits and letters are their upper-case ASCII characters.
enum : unsigned short {
    VK_BACK = 0x08,
    VK_TAB = 0x09,
    VK_RETURN = 0x0D,
    VK_SHIFT = 0x10,
    VK_CONTROL = 0x11,
    VK_MENU = 0x12,
    VK_ESCAPE = 0x1B,
    VK_SPACE = 0x20,
    VK_PRIOR = 0x21,
    VK_NEXT = 0x22,
    VK_END = 0x23,
    VK_HOME = 0x24,
    VK_LEFT = 0x25,
    VK_UP = 0x26,
    VK_RIGHT = 0x27,
    VK_DOWN = 0x28,
    VK_INSERT = 0x2D,
    VK_DELETE = 0x2E,
    VK_APPS = 0x5D,
    VK_MULTIPLY = 0x6A,
    VK_ADD = 0x6B,
    VK_SUBTRACT = 0x6D,
    VK_F1 = 0x70, ///< to 0x87, F24
    VK_F2 = 0x71,
};

namespace platform {

/// The number of one of the toolkit's keys; 0 for one that has none.
[[nodiscard]] ZELVAR_API unsigned short VirtualKey(int key);

} // namespace platform
} // namespace zelvar
