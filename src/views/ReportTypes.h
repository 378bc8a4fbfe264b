#pragma once

#include "zelvar/base/Color.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/views/core/ListViewNumbers.h"

class QPainter;

namespace zelvar {

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

} // namespace zelvar
