#pragma once

#include "zelvar/base/ADIColType.h"
#include "zelvar/lists/FlexRow.h"
#include "zelvar/lists/LabelEditNotify.h"
#include "zelvar/lists/RowPalette.h"
#include "zelvar/lists/core/FlexColumns.h"
#include "zelvar/lists/core/LastSort.h"
#include "zelvar/views/ReportView.h"

#include <QtCore/QPointer>

namespace zelvar {

class CEditCell;

/// Flexible list: a report view whose rows have a font, colours and an indent of their own, whose columns know how they
/// sort and whether they can be edited, that sorts by a click on a heading and edits cells in place.
class ZELVAR_API CListCtrlFlex : public ReportView {
    Q_OBJECT

public:
    explicit CListCtrlFlex(QWidget *parent = nullptr);
    ~CListCtrlFlex() override;

    /// The new row's index. White (0xFFFFFF) as `bkColor` stands for the window's colour, and here 0 for the colour of
    /// the window's text. `font` stays the caller's and must outlive the row.
    int InsertItem(int item, DString const &text, std::uint64_t itemData, QFont const *font, ColorRef textColor,
                   ColorRef bkColor, int indent);
    /// The same with an image; here a `bkColor` of 0 is black.
    int InsertItem(int item, DString const &text, int image, std::uint64_t itemData, QFont const *font,
                   ColorRef textColor, ColorRef bkColor, int indent);
    /// All bits set for no such row; 0 for a row without a record.
    [[nodiscard]] std::uint64_t GetItemData(int item) const;
    /// 0 done, -1 not: the row must have a record.
    int SetItemData(int item, std::uint64_t itemData);

    int InsertColumn(int col, ADIColType type, DString const &caption, bool editable, int format, int width,
                     int subItem);
    void SetColType(int col, ADIColType type, bool editable);
    [[nodiscard]] ADIColType GetColType(int col) const { return m_columns.Type(col); }
    /// Moves the entry of the column table; headings and cells stay. Always 1.
    int MoveColumn(int from, int to);
    int DeleteColumn(int col);
    virtual void RmvAllCol();

    /// 0 is no colour: the list then has that of its window again, and black cannot be chosen.
    int SetBkColor(ColorRef color);
    [[nodiscard]] bool IsBkColorSet() const { return m_bkColor != 0; }

    void EnblSort(bool enable) { m_sortEnabled = enable; }
    [[nodiscard]] bool IsSortEnabled() const { return m_sortEnabled; }
    [[nodiscard]] LastSort &GetLastSort() { return m_lastSort; }
    [[nodiscard]] LastSort const &GetLastSort() const { return m_lastSort; }
    /// Sorts stored rows by a column, as numbers or as bytes. Nothing for a negative column, with sorting switched off
    /// and in a virtual list, nor if a row has no record.
    virtual void Sort(int col, bool ascending);
    /// The row must have a record. `text` must live until the sort is done.
    void SetSortVal(int item, char const *text);
    void SetSortVal(int item, double number);
    // For `SortItems`, on records. They never say less than 0: the result among equal keys is what the merge sort makes
    // of that, turned round when ascending and kept when descending.
    static int CompareStr(long long first, long long second, long long ascending);
    static int CompareNum(long long first, long long second, long long ascending);

    /// Opens the edit of a cell, after the parent was asked. With `skipReadOnly` a read-only column leads on to the
    /// next editable cell, without it any column opens.
    void OnEdit(int item, int subItem, bool skipReadOnly);
    void SetInEditing(bool editing) { m_inEditing = editing; }
    [[nodiscard]] bool IsInEditing() const { return m_inEditing; }

Q_SIGNALS:
    void BeginLabelEdit(zelvar::LabelEditNotify *notify);
    void EndLabelEdit(zelvar::LabelEditNotify *notify);

protected:
    void DrawItem(DrawItemStruct const &item) override;
    void EraseBackground(QPainter &painter, Rect const &area) const override;
    [[nodiscard]] int MeasureCell(int row, int col) const override;
    [[nodiscard]] int LabelLeft(int row, int col) const override; ///< what the row's inset covers of the cell
    bool OnColumnClick(int col) override;
    bool OnDblClick(ReportHit hit, Point point) override;
    void OnMouseMove(Point point) override { OnSetCursor(point); }
    void RowsMoved(NewPlace const &newPlace) override;
    void ColumnInserted(int col) override;
    void ColumnDeleted(int col) override;
    void ColumnsChanged() override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent *event) override;

    /// Sorts by a column the other way round than last time, and remembers it.
    void Sort(int col);
    /// False leaves the pointer's shape to the window.
    bool OnSetCursor(Point point);
    virtual bool OnEndLabelEdit(LabelEditNotify const &notify);

private:
    friend class CEditCell;

    struct RowColors {
        ColorRef text = 0;
        ColorRef back = 0;
    };

    [[nodiscard]] FlexRow *Record(int item) const;
    FlexRow *AddRecord(std::uint64_t itemData, QFont const *font, ColorRef textColor, ColorRef bkColor, int indent);
    [[nodiscard]] RowColors ColorsOf(DrawItemStruct const &item, FlexRow const *record) const;
    void DrawCells(DrawItemStruct const &item, Rect const &label) const;
    /// Pixels of a row, from the edge where one begins to read, that its image and its indent keep free of texts.
    [[nodiscard]] int Inset(FlexRow const *record) const;
    [[nodiscard]] bool EveryRowHasARecord() const;
    void SortAsNumbers(int col, bool ascending);
    void SortAsText(int col, bool ascending);
    bool LeadsToCell(int &item, int &subItem, bool skipReadOnly);
    /// An edit has ended: the list writes, then its parent hears of it.
    void TellEndOfEdit(LabelEditNotify notify);

    LastSort m_lastSort;
    ColorRef m_highlightText = 0;
    ColorRef m_highlight = 0;
    RowPalette m_rowPalette = RowPalette::Current(); ///< that the rows' colours were taken from
    FlexRow *m_records = nullptr;                    ///< head of the chain, owned
    FlexColumns m_columns;
    bool m_sortEnabled = true;
    ColorRef m_bkColor = 0; ///< 0 is not set
    bool m_inEditing = false;
    QPointer<CEditCell> m_edit;
};

} // namespace zelvar
