#pragma once

#include "zelvar/charts/ChartCtrl.h"
#include "zelvar/charts/core/PlotGeometry.h"

#include <map>
#include <optional>
#include <vector>

namespace zelvar {

/// Plot control: points (x, y) in a fixed frame with axes, tick marks, a grid and captions. A click near a point
/// selects it by its x alone and tells the parent (`WM_CHART_SELECTED` with a pointer to the point, valid until the
/// next `Clear`). Left, Right, Home and End move the selection along x and tell the parent in the same way.
///
/// The data range grows with what is added, but only at its upper ends: whoever has negative values sets the lower
/// ones.
class ZELVAR_API CPlotCtrl : public ChartCtrl {
    Q_OBJECT
public:
    struct DataPoint {
        double x = 0;
        double y = 0;
        DString label; ///< in place of the number, with a tick at every point
        DString info;  ///< carried for whoever hears of the selection
    };

    explicit CPlotCtrl(QWidget *parent = nullptr);
    ~CPlotCtrl() override;

    /// Null texts count as empty.
    void AddData(double x, double y, char const *label, char const *info);
    /// Range, spacing and the remembered selection stay; points that come later are not selected by it.
    void Clear();
    [[nodiscard]] std::size_t GetNumData() const { return m_points.size(); }

    void SetDataMinX(double value) { Set(m_range.minX, value); }
    void SetDataMinY(double value) { Set(m_range.minY, value); }
    void SetDataMaxX(double value) { Set(m_range.maxX, value); }
    void SetDataMaxY(double value) { Set(m_range.maxY, value); }
    void SetTickX(double value) { Set(m_range.tickX, value); } ///< spacing; 0 or below draws no x ticks
    void SetTickY(double value) { Set(m_range.tickY, value); } ///< spacing; 0 or below draws the first y tick alone
    void DrawGrid(bool on) { Set(m_drawGrid, on); }
    void DrawLine(bool on) { Set(m_drawLine, on); }
    void DrawEveryXTick(bool on) { Set(m_drawEveryXTick, on); } ///< a tick at every point
    /// Makes room for a title, ten pixels a call, and takes it back. A title with a text is drawn either way.
    void DrawTitle(bool on);
    void SetCaptionX(DString text) { Set(m_captionX, std::move(text)); }
    void SetCaptionY(DString text) { Set(m_captionY, std::move(text)); }
    void SetTitle(DString text) { Set(m_title, std::move(text)); }

    /// Selects as a click there would; data units. Tells nobody.
    void SlctData(double x, double y);
    /// Null for none.
    [[nodiscard]] DataPoint const *GetSlctData() const;
    void UpdtPlot() { MarkDirty(); }

    /// Where everything lies at the present size.
    [[nodiscard]] PlotGeometry Geometry() const { return {ClientSize(), m_margins, m_range}; }
    [[nodiscard]] DString SelectionText() const override;
    [[nodiscard]] ChartValue SelectionValue() const override;
    [[nodiscard]] DString DescriptionText() const override;

protected:
    void Render(OffscreenSurface &surface, ChartColors const &colors) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    /// Most points have none.
    struct PointTexts {
        std::size_t index;
        DString label;
        DString info;
    };

    template <class Value>
    void Set(Value &member, Value value) {
        member = std::move(value);
        MarkDirty();
    }
    [[nodiscard]] std::optional<std::size_t> SelectedIndex() const;
    [[nodiscard]] PointTexts const *TextsOf(std::size_t index) const; ///< null for none
    DataPoint const *SlctData(double x);
    void Select(std::optional<std::size_t> index);
    void NotifyOf(DataPoint const *point);

    ChartMargins m_margins{60, 20, 20, 32};
    std::vector<PlotPoint> m_points;
    std::vector<PointTexts> m_texts;                   ///< of those that have any, in their order
    mutable std::map<std::size_t, DataPoint> m_handed; ///< those that somebody has seen, which stay where they are
    PlotRange m_range;
    std::uint64_t m_numCleared = 0;           ///< points that are gone; the first one left has this number
    std::optional<std::uint64_t> m_selection; ///< number of a point, maybe of one that is gone
    DString m_captionX = "x-axis";
    DString m_captionY = "y-axis";
    DString m_title;
    bool m_drawGrid = true;
    bool m_drawLine = false;
    bool m_drawEveryXTick = false;
};

} // namespace zelvar
