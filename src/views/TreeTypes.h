#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/views/core/TreeNode.h"

class QWidget;

namespace zelvar {

/// Handle of a tree item; null is none. Valid until the item is deleted.
using HTREEITEM = TreeNode *;

// In the place of a parent or of the item to insert behind; never handles of items.
extern ZELVAR_API TreeNode *const TVI_ROOT;  ///< as parent: top level; null says the same
extern ZELVAR_API TreeNode *const TVI_FIRST; ///< before all siblings
extern ZELVAR_API TreeNode *const TVI_LAST;  ///< behind all siblings; null and an item that is no sibling say the same
extern ZELVAR_API TreeNode *const TVI_SORT;  ///< where its text belongs among sorted siblings

/// Styles of a tree view.
enum : unsigned {
    TVS_EDITLABELS = 0x8, ///< the user may edit labels
};
/// What a `TVITEM` holds.
enum : unsigned {
    TVIF_TEXT = 0x1,
    TVIF_IMAGE = 0x2,
    TVIF_PARAM = 0x4,
    TVIF_STATE = 0x8,
    TVIF_HANDLE = 0x10,
    TVIF_SELECTEDIMAGE = 0x20,
    TVIF_CHILDREN = 0x40,
};
/// What `Expand` does.
enum : unsigned { TVE_COLLAPSE = 1, TVE_EXPAND = 2, TVE_TOGGLE = 3, TVE_COLLAPSERESET = 0x8000 };
/// What `GetNextItem` looks for.
enum : unsigned {
    TVGN_ROOT = 0, ///< the first item of all
    TVGN_NEXT = 1,
    TVGN_PREVIOUS = 2,
    TVGN_PARENT = 3,
    TVGN_CHILD = 4,
    TVGN_FIRSTVISIBLE = 5,    ///< at the top of the window
    TVGN_NEXTVISIBLE = 6,     ///< in the order of what is expanded
    TVGN_PREVIOUSVISIBLE = 7, ///< in the order of what is expanded
    TVGN_DROPHILITE = 8,
    TVGN_CARET = 9, ///< the selected one
};
/// Where a point is.
enum : unsigned {
    TVHT_NOWHERE = 0x1, ///< below the last item
    TVHT_ONITEMICON = 0x2,
    TVHT_ONITEMLABEL = 0x4,
    TVHT_ONITEMINDENT = 0x8,
    TVHT_ONITEMBUTTON = 0x10, ///< the expander
    TVHT_ONITEMRIGHT = 0x20,  ///< behind the label
    TVHT_ONITEMSTATEICON = 0x40,
    TVHT_ONITEM = TVHT_ONITEMICON | TVHT_ONITEMLABEL | TVHT_ONITEMSTATEICON, ///< 70
    TVHT_ABOVE = 0x100,
    TVHT_BELOW = 0x200,
    TVHT_TORIGHT = 0x400,
    TVHT_TOLEFT = 0x800,
};
/// Image lists of a tree.
enum : int { TVSIL_NORMAL = 0, TVSIL_STATE = 2 };
/// Scroll bars, as `MoveScroll` names them.
enum : int { SB_HORZ = 0, SB_VERT = 1 };
/// Keys and buttons that are down during a mouse message.
enum : unsigned { MK_LBUTTON = 0x1, MK_RBUTTON = 0x2, MK_SHIFT = 0x4, MK_CONTROL = 0x8, MK_MBUTTON = 0x10 };
/// Notifications of a tree and of its tool tips.
enum : int {
    TVN_BEGINDRAG = -407,
    TVN_BEGINRDRAG = -408,
    TVN_BEGINLABELEDIT = -410,
    TVN_ENDLABELEDIT = -411,
    TTN_SHOW = -521,
};

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
