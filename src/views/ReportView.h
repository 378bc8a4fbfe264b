#pragma once

#include "zelvar/base/ImageList.h"
#include "zelvar/views/ColumnArea.h"
#include "zelvar/views/ReportPainter.h"
#include "zelvar/views/core/RowGeometry.h"
#include "zelvar/views/core/RowSelection.h"

#include <QtCore/QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zelvar {

class ReportInput;
class ReportRows;
class RowNavigation;
class RowScroll;

/// Report list: rows below column headings, drawn on demand.
///
/// Without `LVS_OWNERDATA` it stores texts, image, word and group of each row; with it only a number of rows, which
/// costs nothing per row, and cells are asked for by `OnGetDispInfo`. The selection is a set of intervals. What happens
/// is told by virtual functions first; a handler that returns false lets the signal of the same name follow.
///
/// The rows of a list without groups can be shown as tiles, side by side in lines: the same rows, the same selection,
/// and the headings stay. A tile has a picture above, below it the text of column 0 and below that the one of column 1.
class ZELVAR_API ReportView : public ColumnArea, private RowSelection::Listener {
    Q_OBJECT

public:
    explicit ReportView(QWidget *parent = nullptr);
    ~ReportView() override;
    /// Gives a view made without a parent its style, place, parent and control id. `PreCreateWindow` may add to the
    /// style, which replaces the former one; then `OnCreate` is called. 0 if that refuses.
    int Create(unsigned style, Rect const &place, QWidget *parent, int id);

    [[nodiscard]] unsigned GetStyle() const { return m_style; }
    void ModifyStyle(unsigned remove, unsigned add);
    [[nodiscard]] unsigned GetExtendedStyle() const { return m_extendedStyle; }
    void SetExtendedStyle(unsigned style);

    /// Shows tiles of that size, pixels, or rows for an empty one. Tiles take what a line leaves. The row on top stays
    /// in sight. Groups are not shown meanwhile.
    void ShowTiles(Size tile);
    [[nodiscard]] bool IsTiled() const { return m_tile.cx > 0; }
    [[nodiscard]] Size TileSize() const { return m_tile; } ///< empty for rows

    int InsertItem(ReportItem const &item); ///< the new row; -1 for a virtual list
    bool DeleteItem(int row);
    bool DeleteAllItems();
    [[nodiscard]] int GetItemCount() const { return m_selection.RowCount(); }
    void SetItemCountEx(int count, unsigned flags = 0); ///< virtual lists only
    [[nodiscard]] DString GetItemText(int row, int col) const;
    bool SetItemText(int row, int col, DString const &text);
    [[nodiscard]] int GetItemImage(int row) const;
    bool SetItemImage(int row, int image);
    [[nodiscard]] ItemWord GetItemWord(int row) const; ///< -1 for no such row; 0 in a virtual list
    bool SetItemWord(int row, ItemWord word);
    [[nodiscard]] int GetItemGroup(int row) const;
    bool SetItemGroup(int row, int group);

    void EnableGroupView(bool enable);
    void InsertGroup(DString const &header, int id); ///< behind the groups that are there
    void RemoveAllGroups();

    [[nodiscard]] unsigned GetItemState(int row, unsigned mask) const;
    /// -1 for `row` means all rows. False for a row that does not exist.
    bool SetItemState(int row, unsigned state, unsigned mask);
    [[nodiscard]] int GetSelectedCount() const { return m_selection.Selected().Count(); }
    /// The first row behind `row` that has the wanted state; start with -1. -1 for none.
    [[nodiscard]] int GetNextItem(int row, unsigned flags) const;
    [[nodiscard]] int GetFocusRow() const { return m_selection.Focus(); }
    void SetSelectionMark(int row) { m_selection.SetAnchor(row); }

    // Rectangles and points in pixels of the viewport from its left edge, scrolled.
    [[nodiscard]] ReportHit SubItemHitTest(Point point) const;
    [[nodiscard]] Rect GetItemRect(int row) const;
    /// `LVIR_BOUNDS` of column 0 is the row; `LVIR_LABEL` leaves out the image. Of a tile columns 0 and 1 have their
    /// text as label, `LVIR_ICON` is its picture, and further columns are empty.
    [[nodiscard]] Rect GetSubItemRect(int row, int col, int part) const;
    void EnsureVisible(int row, bool partialOk = false);
    [[nodiscard]] int GetCountPerPage() const; ///< rows that are wholly seen; of tiles at least a line
    [[nodiscard]] int GetTopIndex() const;
    /// The first row that is seen, if only in part, and the one behind the last. Not with groups.
    [[nodiscard]] std::pair<int, int> GetSeenRows() const;
    [[nodiscard]] int RowHeight() const { return m_geometry.RowHeight(); }
    void RedrawItems(int first, int last);
    [[nodiscard]] Rect GetClientRect() const;

    /// Sorts stored rows by their words: a merge sort in which a row of the left half gives way to one of the right
    /// half when the function says more than 0. States go with their rows. False for a virtual list.
    bool SortItems(CompareItems compare, long long parameter);

    void SetImageList(HIMAGELIST list); ///< not owned
    [[nodiscard]] HIMAGELIST GetImageList() const { return m_images; }

    /// The words of a cell for tool tips and screen readers; the cell's text unless a derived class draws other words.
    [[nodiscard]] virtual QString ShownText(int row, int col) const;

Q_SIGNALS:
    void ItemChanged(int row, unsigned oldState, unsigned newState);
    void RangeChanged(int first, int last, unsigned oldState, unsigned newState);
    void ColumnClick(int col);
    void Click(int row, int col);
    void RightClick(int row, int col);
    void DoubleClick(int row, int col);
    void ContextMenu(QPoint screenPoint);

protected:
    virtual void PreCreateWindow(unsigned &style, Rect &place);
    virtual int OnCreate() { return 0; } ///< other than 0 refuses
    virtual void EraseBackground(QPainter &painter, Rect const &area) const;
    virtual void DrawItem(DrawItemStruct const &item);
    [[nodiscard]] Rect PictureRect(Rect const &row) const; ///< in the corner where one begins to read the row
    void DrawRowPicture(DrawItemStruct const &item) const;
    virtual void OnGetDispInfo(DispInfo &info) const;
    /// Pixels that a cell needs, image, indent and margins included.
    [[nodiscard]] virtual int MeasureCell(int row, int col) const;

    /// Pixels of a cell before its text, on the side where one begins to read: here the room of the first column's
    /// image.
    [[nodiscard]] virtual int LabelLeft(int row, int col) const;
    [[nodiscard]] int CellMargins(int row, int col) const; ///< what `MeasureCell` leaves beside the text

    // True keeps it from the parent.
    virtual bool OnItemChanged(int row, unsigned oldState, unsigned newState);
    virtual bool OnRangeChanged(int first, int last, unsigned oldState, unsigned newState);
    virtual bool OnColumnClick(int col);
    virtual bool OnClick(ReportHit hit, Point point);
    virtual bool OnRClick(ReportHit hit, Point point);
    virtual bool OnDblClick(ReportHit hit, Point point);
    virtual bool OnContextMenu(QPoint screenPoint);
    /// A typed character. Here: the next row that begins with what was typed in quick succession, in stored lists.
    virtual void OnChar(QChar character);
    virtual void OnMouseMove(Point) {}
    /// Keys that were down when the button of a click went down, for `OnClick` and `OnRClick`.
    [[nodiscard]] Qt::KeyboardModifiers ClickModifiers() const;

    /// Where a row has gone, -1 for one that is no more.
    using NewPlace = std::function<int(int row)>;
    /// Rows were inserted, deleted or sorted.
    virtual void RowsMoved(NewPlace const &) {}

    [[nodiscard]] RowGeometry const &Geometry() const; ///< up to date
    [[nodiscard]] bool IsVirtual() const { return (m_style & LVS_OWNERDATA) != 0; }
    void SelectOnly(int row); ///< as a click does

    [[nodiscard]] int ContentsWidth() const override { return IsTiled() ? 0 : ColumnsWidth(); }
    void ColumnInserted(int col) override;
    void ColumnDeleted(int col) override;
    void HeadingClicked(int col) override;
    [[nodiscard]] int ContentWidth(int col) const override;
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    friend class ReportInput;

    void RowStateChanged(int row, unsigned oldState, unsigned newState) final;
    void RangeStateChanged(int first, int last, unsigned oldState, unsigned newState) final;

    [[nodiscard]] bool HasRow(int row) const { return row >= 0 && row < GetItemCount(); }
    void RowsChanged(); ///< how many there are or where they stand; laid out before the next look
    void UpdateRowHeight();
    [[nodiscard]] int TilesPerLine() const;
    [[nodiscard]] Rect TileRect(int row, int top) const;
    [[nodiscard]] Rect TilePartRect(int row, int col, int part) const;
    [[nodiscard]] int RowOfTile(int first, int x) const; ///< at that pixel of the line that begins there; -1 for none
    void UpdateVerticalBar();
    void ShowOnTop(int row);                       ///< as far as what is behind it goes
    [[nodiscard]] std::int64_t ContentTop() const; ///< content pixels above the viewport
    [[nodiscard]] RowScroll Scroll() const;
    [[nodiscard]] RowNavigation Navigation();

    unsigned m_style = LVS_REPORT;
    unsigned m_extendedStyle = 0;
    std::unique_ptr<ReportRows> m_rows;
    bool m_groupView = false;
    Size m_tile{}; ///< empty for rows
    RowSelection m_selection{*this};
    mutable RowGeometry m_geometry;
    mutable bool m_layoutDue = false;
    bool m_isFramed = false;                      ///< no row shows where the keyboard is
    HIMAGELIST m_images = nullptr;                ///< not owned
    mutable std::optional<TextMeasure> m_measure; ///< of the present font
    std::unique_ptr<ReportInput> m_input;
};

} // namespace zelvar
