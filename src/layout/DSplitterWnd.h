#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/Geometry.h"
#include "zelvar/layout/core/SplitterLayout.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <map>
#include <utility>
#include <vector>

namespace zelvar {

class SplitterBar;

/// Class of panes: what a splitter is told so that it, or its owner, can make one.
struct PaneClass {
    char const *name;           ///< tells classes apart
    QWidget *(*createObject)(); ///< a pane without a parent
};

/// Splitter: a grid of panes with thin bars that the user moves by mouse or keyboard. An optional owner decides how
/// panes are made, placed and removed.
///
/// Rows and columns are fixed when it is created and change by its own operations only. User-interface thread.
class ZELVAR_API DSplitterWnd : public QWidget {
    Q_OBJECT

public:
    /// Makes, places and removes panes in the splitter's stead. The splitter never tells it of its own end.
    class PaneOwner {
    public:
        virtual ~PaneOwner() = default;
        /// The pane object; null lets the splitter make it from the class.
        virtual QWidget *CreateViewObj(DSplitterWnd *splitter, int row, int col, PaneClass const *paneClass,
                                       Size size) = 0;
        /// Makes the pane a window of the splitter; 0 lets the splitter do so.
        virtual int CreateViewWnd(DSplitterWnd *splitter, QWidget *pane, int row, int col, Rect const &rect,
                                  QWidget *parent, unsigned id) = 0;
        /// Called behind the removal of a pane, while `GetPane` still names it.
        virtual void DeleteView(DSplitterWnd *splitter, int row, int col) = 0;
        /// True means that the owner has done the layout.
        virtual bool RecalcLayout(DSplitterWnd *splitter) = 0;
    };
    /// What `OnDrawSplitter` is asked to draw.
    enum DrawType { Box = 0, Bar = 1, Intersection = 2, Border = 3 };

    explicit DSplitterWnd(QWidget *parent = nullptr);
    ~DSplitterWnd() override = default;

    void SetPaneOwner(PaneOwner *owner) { m_paneOwner = owner; }

    /// Creates a grid of 1 to 16 rows and columns that may grow to the maxima. Panes come by `CreateView`. 0 on
    /// failure.
    int CreateStaticEx(QWidget *parent, int rows, int cols, int maxRows, int maxCols, PaneClass const *paneClass,
                       unsigned id);
    /// Makes the pane for a cell and gives its row and column this ideal size. 0 if the cell is taken or outside, or no
    /// pane can be made.
    int CreateView(int row, int col, PaneClass const *paneClass, Size size);
    void DeleteView(int row, int col);
    void RecalcLayout();

    void GetRowInfo(int row, int &cur, int &ideal, int &min) const;
    void GetColumnInfo(int col, int &cur, int &ideal, int &min) const;
    void SetRowInfo(int row, int ideal, int min);
    void SetColumnInfo(int col, int ideal, int min);
    [[nodiscard]] int GetRowCount() const { return static_cast<int>(m_rows.size()); }
    [[nodiscard]] int GetColumnCount() const { return static_cast<int>(m_columns.size()); }
    /// The pane of a cell, or null.
    [[nodiscard]] QWidget *GetPane(int row, int col) const;
    /// Control id of the pane of a cell.
    [[nodiscard]] static unsigned IdFromRowCol(int row, int col);

    /// Splits the last row or column `at` pixels from its beginning and fills the new one with panes of the class, or
    /// of that given at creation. 0, and nothing changed, if it does not fit, the maximum is reached or a pane cannot
    /// be made.
    int StaticSplitRow(int at, PaneClass const *paneClass);
    int StaticSplitColumn(int at, PaneClass const *paneClass);
    void StaticDeleteRow(int row);
    void StaticDeleteColumn(int col);

    // Moving bars. A vertical bar stands behind a column, a horizontal one behind a row; positions are sizes of that
    // track, pixels.
    [[nodiscard]] int BarPosition(Qt::Orientation bar, int before) const;
    /// Least and most, so that the tracks behind the bar keep their minima.
    [[nodiscard]] std::pair<int, int> BarLimits(Qt::Orientation bar, int before) const;
    void MoveBar(Qt::Orientation bar, int before, int position);
    /// Gives the focus to the first bar, which then moves by the arrow keys; see `SplitterBar`. False without a bar.
    bool MoveBarsByKeyboard();

protected:
    /// With a null painter the rectangle is only marked for repainting, children included.
    virtual void OnDrawSplitter(QPainter *painter, DrawType type, Rect const &rect);

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    enum class Axis { Rows, Columns };
    /// A bar between two tracks of an axis.
    struct BarHit {
        Axis axis = Axis::Columns;
        int before = -1; ///< index of the track before it; -1 for none
        int offset = 0;  ///< of the pointer from the track's far end
    };

    [[nodiscard]] std::vector<SplitterTrack> &Tracks(Axis axis) { return axis == Axis::Rows ? m_rows : m_columns; }
    [[nodiscard]] std::vector<SplitterTrack> const &TracksBeside(Qt::Orientation bar) const {
        return bar == Qt::Vertical ? m_columns : m_rows;
    }
    [[nodiscard]] Rect BarRect(Qt::Orientation bar, int before) const;
    [[nodiscard]] Rect CellRect(int row, int col) const;
    [[nodiscard]] BarHit HitBar(Point point) const;
    void LayOutPanes();
    void PlaceBars();
    int SplitIntrnl(Axis axis, int at);
    void DeleteTrack(Axis axis, int index);
    void ShowBarCursor(BarHit const &hit);

    PaneOwner *m_paneOwner = nullptr;       ///< not owned
    PaneClass const *m_paneClass = nullptr; ///< not owned
    int m_maxRows = 1;
    int m_maxCols = 1;
    std::vector<SplitterTrack> m_rows;
    std::vector<SplitterTrack> m_columns;
    std::map<std::pair<int, int>, QPointer<QWidget>> m_panes; ///< by row and column
    std::vector<SplitterBar *> m_bars;                        ///< children, one over each bar
    BarHit m_dragged;
};

} // namespace zelvar
