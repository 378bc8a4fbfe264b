#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/views/core/TreeNode.h"
#include "zelvar/views/core/TreeViewNumbers.h"

class QWidget;

namespace zelvar {

/// Handle of a tree item; null is none. Valid until the item is deleted.
using HTREEITEM = TreeNode *;

// In the place of a parent or of the item to insert behind; never handles of items.
extern ZELVAR_API TreeNode *const TVI_ROOT;  ///< as parent: top level; null says the same
extern ZELVAR_API TreeNode *const TVI_FIRST; ///< before all siblings
extern ZELVAR_API TreeNode *const TVI_LAST;  ///< behind all siblings; null and an item that is no sibling say the same
extern ZELVAR_API TreeNode *const TVI_SORT;  ///< where its text belongs among sorted siblings

/// Scroll bars, as `MoveScroll` names them.
enum : int { SB_HORZ = 0, SB_VERT = 1 };
/// Keys and buttons that are down during a mouse message.
enum : unsigned { MK_LBUTTON = 0x1, MK_RBUTTON = 0x2, MK_SHIFT = 0x4, MK_CONTROL = 0x8, MK_MBUTTON = 0x10 };
/// The head of each notification.
struct NMHDR {
    QWidget *hwndFrom = nullptr; ///< not owned
    int idFrom = 0;              ///< its control id
    int code = 0;
};

/// An item as it is told and asked for; `mask` says which members count.
struct TVITEM {
    unsigned mask = 0;
    HTREEITEM hItem = nullptr;
    unsigned state = 0;
    unsigned stateMask = 0;
    char const *pszText = nullptr;
    int iImage = -1;
    int iSelectedImage = -1;
    int cChildren = 0; ///< other than 0: shows an expander before it has children
    long long lParam = 0;
};

struct TVINSERTSTRUCT {
    HTREEITEM hParent = nullptr;
    HTREEITEM hInsertAfter = nullptr;
    TVITEM item{};
};

struct TVHITTESTINFO {
    Point pt{}; ///< viewport pixels
    unsigned flags = 0;
    HTREEITEM hItem = nullptr;
};

/// Begin of a drag.
struct NMTREEVIEW {
    NMHDR hdr{};
    TVITEM itemNew{}; ///< `hItem`: the item under the button
    Point ptDrag{};   ///< viewport pixels
};

/// Begin and end of the edit of a label. `hdr` stands first: who is given it may have the whole.
struct NMTVDISPINFO {
    NMHDR hdr{};
    TVITEM item{}; ///< end: `pszText` is the new text, null when the edit was cancelled
};

/// An item is about to be expanded or collapsed.
struct TreeExpanding {
    HTREEITEM item = nullptr;
    unsigned action = 0; ///< `TVE_EXPAND` or `TVE_COLLAPSE`
    bool veto = false;   ///< set it, and nothing happens
};

} // namespace zelvar
