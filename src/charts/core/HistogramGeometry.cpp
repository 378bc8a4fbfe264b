#include "zelvar/charts/core/HistogramGeometry.h"

#include "zelvar/charts/core/Truncation.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr int kMostMarks = 10'000; // of the x axis; more than pixels of any screen

} // namespace

Rect HistogramGeometry::BarRect(int slot) const {
    double const step = SlotWidth();
    int const bottom = GetHstgMaxY();
    double const share = m_histogram->GetSlotVal(slot) / (m_sum * m_maximumShare);
    return {TruncatedPixel(slot * step + m_margins.left), bottom - TruncatedPixel(GetHstgHeight() * share),
            TruncatedPixel((slot + 1) * step + m_margins.left), bottom};
}

Rect HistogramGeometry::CountRect(int slot) const {
    Rect const bar = BarRect(slot);
    return {bar.left, bar.top - 12, bar.right, bar.top - 3};
}

Rect HistogramGeometry::SumRect() const {
    return {GetHstgMaxX() - 60, m_margins.top, GetHstgMaxX(), m_margins.top + 12};
}

std::vector<TickMark> HistogramGeometry::TickMarksY() const {
    std::vector<TickMark> marks;
    for (int i = 0; i <= 5; ++i) {
        int const pixel = TruncatedPixel(GetHstgMaxY() - i * (GetHstgHeight() / 5.0));
        double const percentage = 20.0 * i * m_maximumShare;
        marks.push_back({percentage,
                         pixel,
                         Format("%d%%", TruncatedPixel(percentage)),
                         {m_margins.left - 25, pixel - 5, m_margins.left - 6, pixel + 5},
                         false});
    }
    return marks;
}

std::vector<TickMark> HistogramGeometry::TickMarksX(bool allLabels) const {
    std::vector<TickMark> marks;
    int const slots = NumSlots();
    if (slots < 1 || slots > kMostMarks)
        return marks;
    double const step = SlotWidth();
    for (int i = 0; i <= slots; ++i) {
        double const place = m_margins.left + i * step;
        TickMark mark{m_histogram->GetSlotClss(i), TruncatedPixel(place), {}, {}, false};
        mark.labelRect.top = GetHstgMaxY() + 6;
        mark.labelRect.bottom = GetHstgMaxY() + 25;
        if (allLabels) {
            // The rectangle is half a slot wider on its right: it stands under the slot, not under its edge.
            mark.labelRect.left = TruncatedPixel(place - step * 0.5);
            mark.labelRect.right = TruncatedPixel(m_margins.left + (i + 1) * step + step * 0.5);
            mark.label = Format("%.1f", mark.position);
        } else if (i == 0 || i == slots) {
            mark.labelRect.left = TruncatedPixel(place - 12.0);
            mark.labelRect.right = mark.labelRect.left + 24;
            double const width = (m_histogram->m_maximum - m_histogram->m_minimum) / slots;
            mark.label = Format("%.1f", i == 0 ? mark.position : m_histogram->GetSlotClss(slots - 1) + width);
        }
        marks.push_back(std::move(mark));
    }
    return marks;
}

double HistogramGeometry::WndToDataX(int x) const {
    if (m_histogram == nullptr)
        return 0;
    return static_cast<double>(x - m_margins.left) / GetHstgWidth() *
               (m_histogram->m_maximum - m_histogram->m_minimum) +
           m_histogram->m_minimum;
}

int HistogramGeometry::SlotAt(int x) const {
    if (NumSlots() == 0 || x < GetHstgMinX() || x > GetHstgMaxX())
        return -1;
    // At the last pixel the sum may pass the maximum by a rounding.
    double const value = std::clamp(WndToDataX(x), m_histogram->m_minimum, m_histogram->m_maximum);
    return m_histogram->GetSlotIndx(value);
}

double AutomaticShare(DHstg const *histogram) {
    if (histogram == nullptr)
        return 1.0;
    double const share = static_cast<double>(histogram->GetMaxVal()) / histogram->GetHstgSum();
    for (double const step : {0.05, 0.1, 0.15, 0.2, 0.25, 0.5})
        if (share <= step)
            return step;
    return 1.0;
}

} // namespace zelvar
