#pragma once

#include "zelvar/views/ReportView.h"

namespace zelvar {

/// Plain list with two short hands: columns as wide as their captions, and rows and cells by one operation. It adds
/// nothing else to a report view.
class ZELVAR_API CListCtrlEx : public ReportView {
    Q_OBJECT

public:
    using ReportView::ReportView;

    /// The former image list of that kind. A report view shows the small ones (`LVSIL_SMALL`); the others have no place
    /// in it, and null is answered.
    HIMAGELIST SetImageList(HIMAGELIST list, int which);
    /// Inserts a column at `item`; the column's index, or -1. What of it is set says `mask` (`LVCF_...`): the caption,
    /// the width (the caption's and 15 pixels), `format`, and which text of a row it shows, `subItem`, or `item` where
    /// that is -1. What is not set is as the platform has it: no caption, no width, left, the column's own text.
    int AddColumn(char const *text, int item, int subItem = -1,
                  int mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM, int format = LVCFMT_LEFT);
    /// With `subItem` 0 inserts a row: its index, or -1. Else writes a cell: 1, or 0 if there is no such row or column.
    /// An `image` of -1 is none; only rows have images.
    int AddItem(int item, int subItem, char const *text, int image = -1);
};

} // namespace zelvar
