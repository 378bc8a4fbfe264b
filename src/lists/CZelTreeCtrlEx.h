#pragma once

#include "zelvar/lists/CTreeCursor.h"
#include "zelvar/lists/CZelTreeCtrl.h"

namespace zelvar {

/// Tree control, extended: operations that find or make an item yield a cursor on it. No item is a cursor on null.
class ZELVAR_API CZelTreeCtrlEx : public CZelTreeCtrl {
    Q_OBJECT

public:
    using CZelTreeCtrl::CZelTreeCtrl;

    CTreeCursor InsertItem(TVINSERTSTRUCT *insert) { return Cursor(CZelTreeCtrl::InsertItem(insert)); }
    CTreeCursor InsertItem(unsigned mask, char const *text, int image, int selectedImage, unsigned state,
                           unsigned stateMask, long long itemData, HTREEITEM parent, HTREEITEM after) {
        return Cursor(
            CZelTreeCtrl::InsertItem(mask, text, image, selectedImage, state, stateMask, itemData, parent, after));
    }
    CTreeCursor InsertItem(char const *text, HTREEITEM parent = TVI_ROOT, HTREEITEM after = TVI_LAST) {
        return Cursor(CZelTreeCtrl::InsertItem(text, parent, after));
    }
    CTreeCursor InsertItem(char const *text, int image, int selectedImage, HTREEITEM parent = TVI_ROOT,
                           HTREEITEM after = TVI_LAST) {
        return Cursor(CZelTreeCtrl::InsertItem(text, image, selectedImage, parent, after));
    }

    CTreeCursor HitTest(Point point, unsigned *flags = nullptr) { return Cursor(CZelTreeCtrl::HitTest(point, flags)); }
    CTreeCursor HitTest(TVHITTESTINFO *info) { return Cursor(CZelTreeCtrl::HitTest(info)); }

    CTreeCursor GetNextItem(HTREEITEM item, unsigned code) { return Cursor(CZelTreeCtrl::GetNextItem(item, code)); }
    CTreeCursor GetChildItem(HTREEITEM item) { return GetNextItem(item, TVGN_CHILD); }
    CTreeCursor GetNextSiblingItem(HTREEITEM item) { return GetNextItem(item, TVGN_NEXT); }
    CTreeCursor GetPrevSiblingItem(HTREEITEM item) { return GetNextItem(item, TVGN_PREVIOUS); }
    CTreeCursor GetParentItem(HTREEITEM item) { return GetNextItem(item, TVGN_PARENT); }
    CTreeCursor GetFirstVisibleItem() { return GetNextItem(nullptr, TVGN_FIRSTVISIBLE); }
    CTreeCursor GetNextVisibleItem(HTREEITEM item) { return GetNextItem(item, TVGN_NEXTVISIBLE); }
    CTreeCursor GetPrevVisibleItem(HTREEITEM item) { return GetNextItem(item, TVGN_PREVIOUSVISIBLE); }
    CTreeCursor GetSelectedItem() { return GetNextItem(nullptr, TVGN_CARET); }
    CTreeCursor GetDropHilightItem() { return GetNextItem(nullptr, TVGN_DROPHILITE); }
    CTreeCursor GetRootItem() { return GetNextItem(nullptr, TVGN_ROOT); }

private:
    CTreeCursor Cursor(HTREEITEM item) { return {item, this}; }
};

} // namespace zelvar
