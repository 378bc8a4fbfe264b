#pragma once

namespace zelvar {

// The numbers of a tree, as applications know them.

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
/// States of a tree item; a bit set.
enum : unsigned {
    TVIS_SELECTED = 0x2,
    TVIS_CUT = 0x4,         ///< drawn faint
    TVIS_DROPHILITED = 0x8, ///< marked as the target of a drop
    TVIS_BOLD = 0x10,
    TVIS_EXPANDED = 0x20,
    TVIS_EXPANDEDONCE = 0x40, ///< has been expanded at some time
};
/// Notifications of a tree and of its tool tips.
enum : int {
    TVN_BEGINDRAG = -407,
    TVN_BEGINRDRAG = -408,
    TVN_BEGINLABELEDIT = -410,
    TVN_ENDLABELEDIT = -411,
    TTN_SHOW = -521,
};

} // namespace zelvar
