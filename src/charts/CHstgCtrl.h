#pragma once

#include "zelvar/charts/ChartCtrl.h"
#include "zelvar/charts/core/HistogramGeometry.h"
#include "zelvar/pixels/DHstg.h"

namespace zelvar {

/// Histogram control: a bar a slot, the y axis in percent of all counted values. A click selects a slot, whatever its
/// height, and tells the parent (`WM_CHART_SELECTED` without parameters, at every click). Left, Right, Home and End do
/// the same by keyboard.
class ZELVAR_API CHstgCtrl : public ChartCtrl {
    Q_OBJECT
public:
    explicit CHstgCtrl(QWidget *parent = nullptr);
    ~CHstgCtrl() override;

    /// The caller owns it and keeps it alive; may be null. The selected slot stays, whether the new data has it or not.
    void SetHstg(DHstg const *histogram);
    /// The fraction of all values that the top of the y axis stands for: 1.0 is 100 %. Higher bars rise above it.
    void SetMaxPerc(double share);
    void Refresh() { MarkDirty(); }
    // These take effect with the next `Refresh`.
    void SetAutoScale(bool on) { m_autoScale = on; }             ///< the top suits the data
    void DrawFreq(bool on) { m_drawFreq = on; }                  ///< counts above the bars
    void DrawTextA(bool on) { m_drawText = on; }                 ///< labels at all edges
    [[nodiscard]] int GetSlctSlot() const { return m_slctSlot; } ///< -1 for none

    /// Where everything lies at the present size.
    [[nodiscard]] HistogramGeometry Geometry() const { return {ClientSize(), m_margins, m_histogram, m_maxPerc}; }
    [[nodiscard]] DString SelectionText() const override;
    [[nodiscard]] ChartValue SelectionValue() const override;
    [[nodiscard]] DString DescriptionText() const override;

protected:
    void Render(OffscreenSurface &surface, ChartColors const &colors) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void DrawAxes(QPainter &painter, HistogramGeometry const &geometry, ChartColors const &colors) const;
    void DrawData(QPainter &painter, HistogramGeometry const &geometry, ChartColors const &colors) const;
    void Select(int slot);

    DHstg const *m_histogram = nullptr; ///< not owned
    ChartMargins m_margins{35, 15, 20, 20};
    double m_maxPerc = 1.0;
    bool m_drawText = true;
    bool m_drawFreq = true;
    bool m_autoScale = false;
    int m_slctSlot = -1;
};

} // namespace zelvar
