#include "zelvar/lists/CListCtrlEx.h"

#include "zelvar/platform/ui/Text.h"

namespace zelvar {

namespace {
constexpr int kCaptionMargin = 15; // pixels
}

HIMAGELIST CListCtrlEx::SetImageList(HIMAGELIST list, int which) {
    if (which != LVSIL_SMALL)
        return nullptr;
    HIMAGELIST const former = GetImageList();
    ReportView::SetImageList(list);
    return former;
}

int CListCtrlEx::AddColumn(char const *text, int item, int subItem, int mask, int format) {
    auto const isSet = [mask](int bit) { return (mask & bit) != 0; };
    DString const caption = text == nullptr ? "" : text;
    int const width = fontMetrics().horizontalAdvance(platform::ToQString(caption)) + kCaptionMargin;
    int const shown = subItem == -1 ? item : subItem;
    return InsertColumn(item, isSet(LVCF_TEXT) ? caption : DString(), isSet(LVCF_FMT) ? format : LVCFMT_LEFT,
                        isSet(LVCF_WIDTH) ? width : 0, isSet(LVCF_SUBITEM) ? shown : -1);
}

int CListCtrlEx::AddItem(int item, int subItem, char const *text, int image) {
    DString const cell = text == nullptr ? "" : text;
    if (subItem == 0)
        return InsertItem({.row = item, .text = cell, .image = image});
    return SetItemText(item, subItem, cell) ? 1 : 0;
}

} // namespace zelvar
