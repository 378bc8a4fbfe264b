#pragma once

#include "zelvar/views/TreeView.h"

namespace zelvar {

class CZelTreeCtrlEx;

/// Tree cursor: an item of a `CZelTreeCtrlEx` with its operations as members, so that they can be chained. Costs as
/// much as the handle that it converts to; a cursor on null does nothing and yields cursors on null, but for
/// what is the tree's whatever the item: its root, its first visible, its selected and its marked item.
class ZELVAR_API CTreeCursor {
public:
    CTreeCursor() = default;
    CTreeCursor(HTREEITEM item, CZelTreeCtrlEx *tree) : m_item(item), m_tree(tree) {}
    operator HTREEITEM() const { return m_item; } // NOLINT(google-explicit-constructor): it stands for the handle

    // They change the tree, not the cursor: what they yield may be left.
    // NOLINTBEGIN(modernize-use-nodiscard)
    [[nodiscard]] CZelTreeCtrlEx *GetTree() const { return m_tree; }
    [[nodiscard]] DString GetText() const;
    bool SetText(DString const &text) const;
    bool GetImage(int &image, int &selectedImage) const;
    bool SetImage(int image, int selectedImage) const;
    [[nodiscard]] int GetImageID() const; ///< -1 for none
    [[nodiscard]] unsigned GetState(unsigned mask) const;
    bool SetState(unsigned state, unsigned mask) const;
    [[nodiscard]] std::uint64_t GetData() const;
    bool SetData(std::uint64_t itemData) const;
    bool GetRect(Rect &rect, bool textOnly) const;
    [[nodiscard]] bool HasChildren() const;
    [[nodiscard]] bool IsExpanded() const { return GetState(TVIS_EXPANDED) != 0; }
    bool Expand(unsigned code = TVE_EXPAND) const;

    bool Select() const;
    bool SelectDropTarget() const;
    bool SelectSetFirstVisible() const;
    QLineEdit *EditLabel() const;
    bool SortChildren() const;
    bool EnsureVisible() const;
    [[nodiscard]] std::unique_ptr<DragImage> CreateDragImage() const;
    bool Delete(); ///< stands on null then

    [[nodiscard]] CTreeCursor GetNext(unsigned code) const; ///< `TVGN_...`
    [[nodiscard]] CTreeCursor GetChild() const { return GetNext(TVGN_CHILD); }
    [[nodiscard]] CTreeCursor GetNextSibling() const { return GetNext(TVGN_NEXT); }
    [[nodiscard]] CTreeCursor GetPrevSibling() const { return GetNext(TVGN_PREVIOUS); }
    [[nodiscard]] CTreeCursor GetParent() const { return GetNext(TVGN_PARENT); }
    [[nodiscard]] CTreeCursor GetFirstVisible() const { return GetNext(TVGN_FIRSTVISIBLE); }
    [[nodiscard]] CTreeCursor GetNextVisible() const { return GetNext(TVGN_NEXTVISIBLE); }
    [[nodiscard]] CTreeCursor GetPrevVisible() const { return GetNext(TVGN_PREVIOUSVISIBLE); }
    [[nodiscard]] CTreeCursor GetSelected() const { return GetNext(TVGN_CARET); }
    [[nodiscard]] CTreeCursor GetDropHilight() const { return GetNext(TVGN_DROPHILITE); }
    [[nodiscard]] CTreeCursor GetRoot() const { return GetNext(TVGN_ROOT); }

    // New children of the item; -1 is no image of their own.
    CTreeCursor InsertAfter(DString const &text, HTREEITEM after, int image = -1) const; ///< behind one of its children
    CTreeCursor AddHead(DString const &text, int image = -1) const;
    CTreeCursor AddTail(DString const &text, int image = -1) const;
    // NOLINTEND(modernize-use-nodiscard)

private:
    // NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): applications use this name
    [[nodiscard]] CTreeCursor _Insert(DString const &text, int image, HTREEITEM after) const;

    HTREEITEM m_item = nullptr;
    CZelTreeCtrlEx *m_tree = nullptr; ///< not owned
};

} // namespace zelvar
