#pragma once

#include "zelvar/views/ReportTypes.h"

#include <QtWidgets/QAbstractScrollArea>

#include <memory>
#include <vector>

class QHeaderView;

namespace zelvar {

/// Scroll area below a row of column headings: the columns of a report view, their widths and their order.
///
/// Columns are numbered as they were inserted; where a user has dragged them to is told by the order alone. Without
/// headings they stand by their numbers, whatever the order. Where one reads from the right the columns begin at the
/// right edge; places are pixels from the left all the same. Painting, hit tests, edits and tips ask here.
class ZELVAR_API ColumnArea : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit ColumnArea(QWidget *parent = nullptr);
    ~ColumnArea() override;

    /// The new column's number; beyond the end means at the end. `subItem` below 0 is the number itself.
    int InsertColumn(int col, DString const &caption, int format = LVCFMT_LEFT, int width = 0, int subItem = -1);
    /// 1, or 0 if there is no such column.
    int DeleteColumn(int col);
    [[nodiscard]] int GetColumnCount() const;
    /// False if there is no such column.
    bool GetColumn(int col, ReportColumn &column) const;
    [[nodiscard]] int GetColumnSubItem(int col) const; ///< `col` itself for no such column
    bool SetColumnCaption(int col, DString const &caption);
    bool SetColumnFormat(int col, int format);
    [[nodiscard]] int GetColumnWidth(int col) const; ///< 0 for no such column
    bool SetColumnWidth(int col, int width);         ///< pixels, or one of `LVSCW_...`
    /// Column numbers in the order of reading.
    [[nodiscard]] std::vector<int> GetColumnOrderArray() const;
    bool SetColumnOrderArray(std::vector<int> const &order);
    [[nodiscard]] QHeaderView *GetHeaderCtrl() const { return m_header; }
    void ShowHeader(bool show);
    /// The arrow in a heading; none for a column below 0.
    void SetSortMark(int col, bool ascending);

    [[nodiscard]] int ColumnsWidth() const;      ///< of all columns
    [[nodiscard]] int ColumnLeft(int col) const; ///< in viewport pixels, scrolled
    [[nodiscard]] int ColumnAt(int x) const;     ///< at viewport pixel `x`, -1 for none
    /// Scrolls sideways as far as it takes to see the column, or the beginning of one that is wider than the view.
    void EnsureColumnVisible(int col);

protected:
    /// Turns a rectangle of the viewport that counts from the edge where reading begins into one that counts from the
    /// left, and the other way round.
    [[nodiscard]] Rect Mirrored(Rect const &rect) const;
    // Pixels from the edge where reading begins: of all columns, and of those that are seen.
    [[nodiscard]] int ColumnPosition(int col) const;
    [[nodiscard]] int ColumnStart(int col) const;

    /// How far it can be scrolled sideways, and the width of the view besides.
    [[nodiscard]] virtual int ContentsWidth() const { return ColumnsWidth(); }
    /// What fits a column, for `LVSCW_AUTOSIZE`.
    [[nodiscard]] virtual int ContentWidth(int col) const = 0;
    virtual void ColumnInserted(int col) = 0;
    virtual void ColumnDeleted(int col) = 0;
    virtual void HeadingClicked(int col) = 0;
    /// Columns have moved or changed their widths, or the area was scrolled sideways.
    virtual void ColumnsChanged();

    void UpdateHorizontalBar();
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent *event) override;

private:
    class Model;

    void PlaceHeader();
    [[nodiscard]] bool StandByNumber() const; ///< and not where the header has them

    std::unique_ptr<Model> m_model;
    QHeaderView *m_header;      ///< a child
    bool m_isHeaderDue = false; ///< to be placed anew behind the events that are waiting
};

} // namespace zelvar
