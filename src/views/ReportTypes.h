#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/views/core/RowSelection.h"

#include <cstdint>

class QPainter;

namespace zelvar {

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

namespace platform {

/// The word that a row carries for its owner.
using ItemWord = std::int64_t;

/// A row to be inserted.
struct ReportItem {
    int row = 0; ///< beyond the end means at the end
    DString text{};
    int image = -1; ///< index in the small image list
    ItemWord data = 0;
    int group = -1; ///< id of a group
};

/// A column as it stands.
struct ReportColumn {
    DString caption{};
    int format = LVCFMT_LEFT;
    int width = 0;   ///< pixels
    int subItem = 0; ///< which text of a row it shows
};

/// Where a point is. Both -1 beside the rows and columns.
struct ReportHit {
    int row = -1;
    int col = -1;
};

/// One request to draw a row.
struct DrawItemStruct {
    QPainter &painter;
    Rect rcItem{};       ///< viewport pixels; from the first to the last column, whatever is seen of them
    int itemID = 0;      ///< the row
    unsigned state = 0;  ///< `LVIS_SELECTED` as it is to be shown; `LVIS_FOCUSED` only while the list has the focus
    unsigned action = 1; ///< `ODA_DRAWENTIRE` always
    ItemWord itemData = 0;
    ColorRef textColor = 0; ///< the context's present colours
    ColorRef bkColor = 0;
};
/// The one action that is asked for.
inline constexpr unsigned ODA_DRAWENTIRE = 1;

/// What a virtual list asks its owner for.
struct DispInfo {
    int iItem = 0;
    int iSubItem = 0;
    bool wantsText = false;
    bool wantsImage = false;
    char *pszText = nullptr; ///< buffer of `cchTextMax` bytes; set to null for an empty text
    int cchTextMax = 0;
    int iImage = -1;
};

/// Compares the words of two rows for `SortItems`; above 0 when the first is to stand behind the second.
using CompareItems = int (*)(long long first, long long second, long long parameter);

} // namespace platform
} // namespace zelvar
