#pragma once

#include "zelvar/base/ImageList.h"
#include "zelvar/views/DragImage.h"
#include "zelvar/views/TreeTypes.h"

#include <QtCore/QPointer>
#include <QtWidgets/QTreeView>

#include <memory>

class QLineEdit;

namespace zelvar {

class TreeInput;
class TreeItemDelegate;
class TreeLabelEdit;
class TreeModel;

/// Tree view: items with a text, two images, a word and a state, by handles.
///
/// What happens is told by virtual functions first; a handler that returns true keeps it from the signal of the same
/// name. Points and rectangles are pixels of the viewport. No operation minds a null handle; a handle of a deleted item
/// must not be used. User-interface thread.
class ZELVAR_API TreeView : public QTreeView {
    Q_OBJECT

public:
    explicit TreeView(QWidget *parent = nullptr);
    ~TreeView() override;

    [[nodiscard]] unsigned GetStyle() const { return m_style; }
    void ModifyStyle(unsigned remove, unsigned add) { m_style = (m_style & ~remove) | add; }

    HTREEITEM InsertItem(TVINSERTSTRUCT const *insert);
    HTREEITEM InsertItem(unsigned mask, char const *text, int image, int selectedImage, unsigned state,
                         unsigned stateMask, long long itemData, HTREEITEM parent, HTREEITEM after);
    HTREEITEM InsertItem(DString const &text, HTREEITEM parent = TVI_ROOT, HTREEITEM after = TVI_LAST);
    HTREEITEM InsertItem(DString const &text, int image, int selectedImage, HTREEITEM parent = TVI_ROOT,
                         HTREEITEM after = TVI_LAST);
    /// With all below it; `TVI_ROOT` stands for all items. If the selected item goes with it, a neighbour is selected.
    bool DeleteItem(HTREEITEM item);
    bool DeleteAllItems();
    [[nodiscard]] unsigned GetCount() const;

    [[nodiscard]] DString GetItemText(HTREEITEM item) const;
    bool SetItemText(HTREEITEM item, DString const &text);
    [[nodiscard]] std::uint64_t GetItemData(HTREEITEM item) const;
    bool SetItemData(HTREEITEM item, std::uint64_t itemData);
    bool GetItemImage(HTREEITEM item, int &image, int &selectedImage) const;
    bool SetItemImage(HTREEITEM item, int image, int selectedImage);
    [[nodiscard]] unsigned GetItemState(HTREEITEM item, unsigned mask) const;
    bool SetItemState(HTREEITEM item, unsigned state, unsigned mask);
    /// Shows an expander whether or not there are children.
    bool SetItemChildren(HTREEITEM item, bool mark);
    /// It has children or is marked so.
    [[nodiscard]] bool ItemHasChildren(HTREEITEM item) const;

    /// Tells before and after. False if it was refused or there is nothing to expand.
    bool Expand(HTREEITEM item, unsigned code);
    /// Expands the items above it; null for no selection.
    bool SelectItem(HTREEITEM item);
    bool SelectDropTarget(HTREEITEM item);
    bool SelectSetFirstVisible(HTREEITEM item);
    bool EnsureVisible(HTREEITEM item);
    bool SortChildren(HTREEITEM item); ///< by text, letter case not regarded

    [[nodiscard]] HTREEITEM GetNextItem(HTREEITEM item, unsigned code) const;
    [[nodiscard]] HTREEITEM GetRootItem() const { return GetNextItem(nullptr, TVGN_ROOT); }
    [[nodiscard]] HTREEITEM GetChildItem(HTREEITEM item) const { return GetNextItem(item, TVGN_CHILD); }
    [[nodiscard]] HTREEITEM GetNextSiblingItem(HTREEITEM item) const { return GetNextItem(item, TVGN_NEXT); }
    [[nodiscard]] HTREEITEM GetPrevSiblingItem(HTREEITEM item) const { return GetNextItem(item, TVGN_PREVIOUS); }
    [[nodiscard]] HTREEITEM GetParentItem(HTREEITEM item) const { return GetNextItem(item, TVGN_PARENT); }
    [[nodiscard]] HTREEITEM GetFirstVisibleItem() const { return GetNextItem(nullptr, TVGN_FIRSTVISIBLE); }
    [[nodiscard]] HTREEITEM GetNextVisibleItem(HTREEITEM item) const { return GetNextItem(item, TVGN_NEXTVISIBLE); }
    [[nodiscard]] HTREEITEM GetPrevVisibleItem(HTREEITEM item) const { return GetNextItem(item, TVGN_PREVIOUSVISIBLE); }
    [[nodiscard]] HTREEITEM GetSelectedItem() const { return m_selected; }
    [[nodiscard]] HTREEITEM GetDropHilightItem() const { return m_dropTarget; }

    HTREEITEM HitTest(TVHITTESTINFO *info) const;
    HTREEITEM HitTest(Point point, unsigned *flags = nullptr) const;
    /// The row or the label alone. False for an item that is not shown.
    bool GetItemRect(HTREEITEM item, Rect &rect, bool textOnly) const;

    /// The former list. Not owned. Only `TVSIL_NORMAL` is drawn; `side` is that of the pictures.
    HIMAGELIST SetImageList(HIMAGELIST images, int which, int side = 16);
    [[nodiscard]] HIMAGELIST GetImageList(int which) const { return which == TVSIL_NORMAL ? m_images : nullptr; }
    /// Image and label. Null for an item that is not shown.
    [[nodiscard]] std::unique_ptr<DragImage> CreateDragImage(HTREEITEM item);

    /// Opens the edit of a label; null if it was refused. It ends by Return, Escape, or the loss of the focus.
    QLineEdit *EditLabel(HTREEITEM item);
    [[nodiscard]] QLineEdit *GetEditControl() const;
    void EndEditLabelNow(bool cancel);
    /// Keys of the edit, before shortcuts of the application look at them. True keeps them from those.
    virtual bool PreTranslateMessage(QEvent &message);

Q_SIGNALS:
    void ItemExpanding(zelvar::TreeExpanding *expanding);
    void ItemExpanded(zelvar::TreeNode *item, unsigned action);
    void SelChanged(zelvar::TreeNode *oldItem, zelvar::TreeNode *newItem);
    /// `*result` as in `OnDblclk`.
    void DoubleClick(zelvar::Point point, long long *result);
    void RightClick(zelvar::Point point);
    void KeyDown(unsigned short key);
    void BeginDrag(zelvar::NMTREEVIEW *info);
    void BeginRightDrag(zelvar::NMTREEVIEW *info);
    /// `*result` other than 0 refuses the edit.
    void BeginLabelEdit(zelvar::NMTVDISPINFO *info, long long *result);
    /// `*result` other than 0 takes the new text over.
    void EndLabelEdit(zelvar::NMTVDISPINFO *info, long long *result);

protected:
    // True keeps it from the parent. `*result` is 0 at first.
    virtual bool OnItemExpanding(TreeExpanding & /*expanding*/) { return false; }
    virtual bool OnSelchanged(HTREEITEM /*oldItem*/, HTREEITEM /*newItem*/) { return false; }
    /// `*result` other than 0 keeps the item from being expanded or collapsed.
    virtual bool OnDblclk(Point /*point*/, long long * /*result*/) { return false; }
    /// By the mouse, or by the keyboard at the selected item.
    virtual bool OnRclick(Point /*point*/) { return false; }
    /// `*result` other than 0 keeps a character from the search.
    virtual bool OnKeydown(unsigned short /*key*/, long long * /*result*/) { return false; }
    virtual bool OnBegindrag(NMTREEVIEW & /*info*/) { return false; }
    virtual bool OnBeginrdrag(NMTREEVIEW & /*info*/) { return false; }
    virtual bool OnBeginLabelEdit(NMTVDISPINFO & /*info*/, long long * /*result*/) { return false; }
    virtual bool OnEndLabelEdit(NMTVDISPINFO & /*info*/, long long * /*result*/) { return false; }
    /// The item is about to go; it is still whole.
    virtual void OnDeleteItem(HTREEITEM /*item*/) {}
    /// Of the tool tip's window.
    virtual bool OnNotify(int /*code*/) { return false; }
    /// The user may edit labels.
    [[nodiscard]] virtual bool CanEditLabels() const { return (m_style & TVS_EDITLABELS) != 0; }

    /// `text` in the place of `item.pszText`.
    HTREEITEM Insert(HTREEITEM parent, HTREEITEM after, TVITEM const &item, std::string_view text);

    // The mouse; here the default handling.
    virtual void OnLButtonDown(unsigned flags, Point point);
    virtual void OnLButtonUp(unsigned flags, Point point);
    virtual void OnRButtonDown(unsigned flags, Point point);
    virtual void OnRButtonUp(unsigned flags, Point point);
    virtual void OnMouseMove(unsigned flags, Point point);
    /// `MK_...` of the last message of the mouse.
    [[nodiscard]] unsigned MouseFlags() const;

    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void selectionChanged(QItemSelection const &selected, QItemSelection const &deselected) override;

private:
    friend class TreeInput;
    friend class TreeItemDelegate;
    friend class TreeLabelEdit;
    struct Parts;

    [[nodiscard]] Parts PartsOf(TreeNode const &item) const;
    [[nodiscard]] TreeNode *ParentFor(HTREEITEM parent) const;
    [[nodiscard]] static TreeNode *SiblingFor(TreeNode &parent, HTREEITEM after, std::string_view text);
    void ForgetExpandedBelow(TreeNode &item);
    void SetExpanded(TreeNode &item, bool expanded);
    void ExpandAbove(TreeNode const &item);
    void ExpandAll(HTREEITEM item);
    void NoteExpanded(QModelIndex const &index, bool expanded);
    void Refresh(TreeNode const *item);
    bool ShowLabelTip(QHelpEvent const &event);
    /// The edit has ended with a text or, cancelled, without.
    void TellEndOfEdit(TreeLabelEdit &edit, DString const *text);
    void TellMenuKey();
    void TellRightClick(Point point);

    std::unique_ptr<TreeModel> m_model;
    TreeItemDelegate *m_delegate; ///< a child
    unsigned m_style = 0;
    HTREEITEM m_selected = nullptr;
    HTREEITEM m_dropTarget = nullptr;
    HIMAGELIST m_images = nullptr; ///< not owned
    int m_pictureSide = 16;
    QPointer<TreeLabelEdit> m_edit;
    std::unique_ptr<TreeInput> m_input;
};

} // namespace zelvar
