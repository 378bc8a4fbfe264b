#pragma once

#include "zelvar/controls/CZelImageList.h"
#include "zelvar/views/TreeView.h"

namespace zelvar {

/// Tree control: a tree view with drag and drop of items by either mouse button, labels whose edit can be switched off,
/// images drawn for it, and hooks that a derived class overrides.
///
/// The button that began a drag ends it. Escape, the loss of the window and the end of the dragged item end it without
/// a drop.
class ZELVAR_API CZelTreeCtrl : public TreeView {
    Q_OBJECT

public:
    explicit CZelTreeCtrl(QWidget *parent = nullptr);
    ~CZelTreeCtrl() override;

    void EnableRghtSlct(bool enable) { m_enableRghtSlct = enable; } ///< a press of the right button selects
    void EnableLeftDrag(bool enable) { m_enableLeftDrag = enable; }
    void EnableRghtDrag(bool enable) { m_enableRghtDrag = enable; }
    /// Without it the hooks do not hear of an edit, which is not refused for that.
    void EnableEdit(bool enable) { m_enableEdit = enable; }
    [[nodiscard]] bool IsLeftDrag() const { return m_dragMode == DragLeft; }
    [[nodiscard]] bool IsRghtDrag() const { return m_dragMode == DragRight; }
    [[nodiscard]] bool IsInDragMode() const { return m_dragMode != DragNone; }
    [[nodiscard]] HTREEITEM GetDragItem() const { return m_dragItem; }
    /// Where the drag began: y in the upper half, x in the lower one.
    [[nodiscard]] std::uint64_t GetDragData() const { return m_dragData; }
    [[nodiscard]] HTREEITEM GetClickItem() const { return m_clickItem; } ///< under a button that is down

    /// With the default image, if there is an image list.
    HTREEITEM AddItem(DString const &text, std::uint64_t itemData, HTREEITEM parent, HTREEITEM after);
    void SetDefaultImage(int image) { m_defaultImage = image; }
    // The first one depth first; null if there is none. A null `root` is the whole tree.
    HTREEITEM FindItem(std::uint64_t itemData) { return FindItem(itemData, nullptr); }
    HTREEITEM FindItem(std::uint64_t itemData, HTREEITEM root);
    HTREEITEM FindItem(DString const &text);
    void SlctItem(std::uint64_t itemData) { SelectItem(FindItem(itemData)); }
    void SlctItem(std::uint64_t itemData, HTREEITEM root) { SelectItem(FindItem(itemData, root)); }
    void SlctItem(DString const &text) { SelectItem(FindItem(text)); }
    [[nodiscard]] std::uint64_t GetCrntData() const { return GetItemData(GetSelectedItem()); }
    /// The item at a screen point, null outside the window.
    [[nodiscard]] HTREEITEM GetItem(Point const &screenPoint) const;

    // Images; the operations below do nothing without an image list.
    void InitImages();
    /// From a registered bitmap, see `CZelImageList::RegisterBitmap`.
    void InitImages(unsigned bitmapId, int cx, int grow, unsigned long mask);
    void ClearImages();
    [[nodiscard]] CZelImageList &GetZelImageList() { return m_images; }
    void DrawCircleSmall(HTREEITEM item, ColorRef fill, ColorRef border);
    void DrawRect(HTREEITEM item, ColorRef fill, ColorRef border);
    void DrawCircle(HTREEITEM item, ColorRef fill, ColorRef border, bool flag); ///< `flag`: with a dot in its middle
    /// False if there is no such icon; true without an image list.
    bool DrawIcon(HTREEITEM item, unsigned iconId, char const *file);
    /// A file that does not exist is looked for among the plugins.
    bool DrawPluginIcon(HTREEITEM item, unsigned iconId, char const *file);

    void MoveScroll(int bar, int position); ///< `SB_HORZ` or `SB_VERT`
    /// Drops the dragged item on `target`, null for none. Nothing without a drag.
    void EndDrag(HTREEITEM target);
    /// Ends a drag without a drop.
    void CancelDrag();

    bool PreTranslateMessage(QEvent &message) override;

protected:
    virtual bool IsDragItem(HTREEITEM /*item*/) { return true; }
    virtual bool IsDragTrgt(HTREEITEM item, HTREEITEM target) { return item != target; }
    virtual void OnDragEnd(HTREEITEM /*item*/, HTREEITEM /*target*/) {}
    // True keeps the notification from the parent.
    virtual bool DTCDblClck(HTREEITEM item, long long *result);
    virtual bool DTCSlctChg(HTREEITEM oldItem, HTREEITEM newItem, long long *result);
    virtual void DTCKeyDown(unsigned short key, long long *result);
    /// `point` is a point of the screen.
    virtual bool DTCCntxMenu(HTREEITEM item, Point point, long long *result);
    /// `*result` other than 0 takes the text over, which by default does not happen.
    virtual void DTCEndLabelEdit(NMHDR * /*header*/, long long * /*result*/) {}
    /// `*result` other than 0 refuses the edit.
    virtual void DTCBeginLabelEdit(NMHDR * /*header*/, long long * /*result*/) {}
    virtual bool DTCLButtonDown(HTREEITEM /*item*/, unsigned /*flags*/, Point /*point*/) { return false; }
    virtual void InitDrag(NMTREEVIEW *info, int mode);

    bool OnBeginLabelEdit(NMTVDISPINFO &info, long long *result) override;
    bool OnEndLabelEdit(NMTVDISPINFO &info, long long *result) override;
    bool OnBegindrag(NMTREEVIEW &info) override;
    bool OnBeginrdrag(NMTREEVIEW &info) override;
    bool OnKeydown(unsigned short key, long long *result) override;
    bool OnSelchanged(HTREEITEM oldItem, HTREEITEM newItem) override;
    bool OnRclick(Point point) override;
    bool OnDblclk(Point point, long long *result) override;
    void OnDeleteItem(HTREEITEM item) override;
    bool OnNotify(int code) override;
    void OnLButtonDown(unsigned flags, Point point) override;
    void OnLButtonUp(unsigned flags, Point point) override;
    void OnRButtonDown(unsigned flags, Point point) override;
    void OnRButtonUp(unsigned flags, Point point) override;
    void OnMouseMove(unsigned flags, Point point) override;
    [[nodiscard]] bool CanEditLabels() const override { return m_enableEdit || TreeView::CanEditLabels(); }

    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    enum DragMode : int { DragNone = 0, DragLeft = 1, DragRight = 2 };

    void DragTo(Point point);
    void ScrollForDrag(Point point);
    void ReleaseDrag();
    void SetImageOf(HTREEITEM item, int image);

    int m_dragMode = DragNone;
    CZelImageList m_images;
    int m_defaultImage = 0;
    HTREEITEM m_clickItem = nullptr;
    HTREEITEM m_dragItem = nullptr;
    std::unique_ptr<DragImage> m_dragImage; ///< for the length of a drag
    std::uint64_t m_dragData = 0;
    bool m_enableRghtSlct = false;
    bool m_enableLeftDrag = false;
    bool m_enableRghtDrag = false;
    bool m_enableEdit = false;
    int m_savedScroll = 0; ///< horizontal, from before an edit
    bool m_held = false;   ///< the mouse is captured and the cursor hidden
};

} // namespace zelvar
