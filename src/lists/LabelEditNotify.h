#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

class CListCtrlFlex;

/// What a list tells its parent when the edit of a cell begins or ends.
struct LabelEditNotify {
    CListCtrlFlex *hwndFrom = nullptr;
    int idFrom = 0; ///< begin: control id of the list; end: of the edit
    int wParam = 0; ///< begin: control id of the list's parent; end: of the list
    int iItem = -1;
    int iSubItem = 0;
    DString const *pszText = nullptr; ///< end: the new text, null when the edit was cancelled
    bool veto = false;                ///< begin: set it, and there is no edit
};

} // namespace zelvar
