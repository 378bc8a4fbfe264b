#include "zelvar/platform/ui/VirtualKey.h"

#include <QtCore/Qt>

#include <algorithm>
#include <iterator>

namespace zelvar::platform {

unsigned short VirtualKey(int key) {
    struct Pair {
        int toolkit;
        unsigned short number;
    };
    static constexpr Pair pairs[] = {
        {Qt::Key_Backspace, VK_BACK},  {Qt::Key_Tab, VK_TAB},        {Qt::Key_Backtab, VK_TAB},
        {Qt::Key_Return, VK_RETURN},   {Qt::Key_Enter, VK_RETURN},   {Qt::Key_Shift, VK_SHIFT},
        {Qt::Key_Control, VK_CONTROL}, {Qt::Key_Alt, VK_MENU},       {Qt::Key_Escape, VK_ESCAPE},
        {Qt::Key_PageUp, VK_PRIOR},    {Qt::Key_PageDown, VK_NEXT},  {Qt::Key_End, VK_END},
        {Qt::Key_Home, VK_HOME},       {Qt::Key_Left, VK_LEFT},      {Qt::Key_Up, VK_UP},
        {Qt::Key_Right, VK_RIGHT},     {Qt::Key_Down, VK_DOWN},      {Qt::Key_Insert, VK_INSERT},
        {Qt::Key_Delete, VK_DELETE},   {Qt::Key_Menu, VK_APPS},      {Qt::Key_Asterisk, VK_MULTIPLY},
        {Qt::Key_Plus, VK_ADD},        {Qt::Key_Minus, VK_SUBTRACT},
    };
    bool const character =
        key == Qt::Key_Space || (key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z);
    if (character)
        return static_cast<unsigned short>(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24)
        return static_cast<unsigned short>(VK_F1 + (key - Qt::Key_F1));
    auto const *const at = std::find_if(std::begin(pairs), std::end(pairs), [key](Pair p) { return p.toolkit == key; });
    return at == std::end(pairs) ? static_cast<unsigned short>(0) : at->number;
}

} // namespace zelvar::platform
