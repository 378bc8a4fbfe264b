#pragma once

#include <cstdint>

namespace zelvar {

/// The word that a row carries for its owner.
using ItemWord = std::int64_t;

// The numbers of a list in rows and columns, as applications know them.

/// Styles of a report view.
enum : unsigned {
    LVS_REPORT = 0x1,
    LVS_SINGLESEL = 0x4,
    LVS_SHOWSELALWAYS = 0x8,    ///< the selection is marked without the focus too
    LVS_OWNERDRAWFIXED = 0x400, ///< kept for those who ask; every row is drawn by `DrawItem` anyway
    LVS_OWNERDATA = 0x1000,     ///< only a number of rows is stored; cells are asked for
    LVS_NOCOLUMNHEADER = 0x4000,
};
/// Extended styles.
enum : unsigned {
    LVS_EX_HEADERDRAGDROP = 0x10, ///< columns are dragged to other places
    LVS_EX_FULLROWSELECT = 0x20,  ///< kept for those who ask; rows are always selected as a whole
    LVS_EX_LABELTIP = 0x4000,     ///< a tool tip shows what does not fit a cell
};
/// Flags of `SetItemCountEx`.
enum : unsigned {
    LVSICF_NOINVALIDATEALL = 1, ///< only rows that come or go are painted anew
    LVSICF_NOSCROLL = 2,        ///< the scroll position stays; it does anyway as long as its row exists
};
/// Formats of a column.
enum : int { LVCFMT_LEFT = 0, LVCFMT_RIGHT = 1, LVCFMT_CENTER = 2 };
/// In the place of a column's width.
enum : int {
    LVSCW_AUTOSIZE = -1,           ///< as wide as its widest cell
    LVSCW_AUTOSIZE_USEHEADER = -2, ///< the caption fits too; the last column takes what is left of the window
};
/// Parts of a row or cell.
enum : int { LVIR_BOUNDS = 0, LVIR_ICON = 1, LVIR_LABEL = 2 };
/// What `GetNextItem` looks for.
enum : unsigned { LVNI_ALL = 0, LVNI_FOCUSED = 1, LVNI_SELECTED = 2 };
/// State bits of a row.
enum : unsigned {
    LVIS_FOCUSED = 1,
    LVIS_SELECTED = 2,
};
/// Which image list a list takes.
enum : int { LVSIL_NORMAL = 0, LVSIL_SMALL = 1, LVSIL_STATE = 2 };
/// What of a column is given.
enum : int { LVCF_FMT = 1, LVCF_WIDTH = 2, LVCF_TEXT = 4, LVCF_SUBITEM = 8 };

} // namespace zelvar
