#pragma once

#include "zelvar/charts/core/PlotGeometry.h"
#include "zelvar/pixels/DHstg.h"

#include <optional>

namespace zelvar {

/// Where everything of a histogram chart lies, in logical pixels of its client area. Painting, hit testing, the
/// accessible interface and the tests ask the same object, which looks at the data and does not keep it.
class ZELVAR_API HistogramGeometry {
public:
    /// `histogram` may be null. `maximumShare` is the fraction of all values that the top of the y axis stands for.
    HistogramGeometry(Size client, ChartMargins margins, DHstg const *histogram, double maximumShare)
        : m_client(client), m_margins(margins), m_histogram(histogram), m_maximumShare(maximumShare),
          m_sum(histogram == nullptr ? 0 : histogram->GetHstgSum()) {}

    [[nodiscard]] int GetHstgMinX() const { return m_margins.left; }
    [[nodiscard]] int GetHstgMinY() const { return m_margins.top; }
    [[nodiscard]] int GetHstgMaxX() const { return m_client.cx - m_margins.right; }
    [[nodiscard]] int GetHstgMaxY() const { return m_client.cy - m_margins.bottom; }
    [[nodiscard]] int GetHstgWidth() const { return GetHstgMaxX() - GetHstgMinX(); }
    [[nodiscard]] int GetHstgHeight() const { return GetHstgMaxY() - GetHstgMinY(); }

    [[nodiscard]] int NumSlots() const { return m_histogram == nullptr ? 0 : m_histogram->m_numSlot; }
    /// The bar of a slot, its right and bottom edges drawn as well. It may stand higher than the drawn area.
    [[nodiscard]] Rect BarRect(int slot) const;
    [[nodiscard]] Rect CountRect(int slot) const;
    [[nodiscard]] Rect SumRect() const;

    /// Six marks, whatever the height.
    [[nodiscard]] std::vector<TickMark> TickMarksY() const;
    /// A mark at each edge of a slot; labels at all of them, or at the outer two.
    [[nodiscard]] std::vector<TickMark> TickMarksX(bool allLabels) const;

    [[nodiscard]] double WndToDataX(int x) const;
    /// The slot under a click, whose height is not looked at; -1 for none.
    [[nodiscard]] int SlotAt(int x) const;

private:
    [[nodiscard]] double SlotWidth() const { return static_cast<double>(GetHstgWidth()) / NumSlots(); }

    Size m_client;
    ChartMargins m_margins;
    DHstg const *m_histogram; ///< not owned
    double m_maximumShare;
    int m_sum;
};

/// The maximum share that suits the data: the first step of a short ladder that its largest slot does not pass.
[[nodiscard]] ZELVAR_API double AutomaticShare(DHstg const *histogram);

} // namespace zelvar
