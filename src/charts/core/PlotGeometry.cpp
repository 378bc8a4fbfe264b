#include "zelvar/charts/core/PlotGeometry.h"

#include "zelvar/charts/core/Truncation.h"

#include <cmath>
#include <set>
#include <utility>

namespace zelvar {

namespace {

constexpr std::size_t kMostTicks = 10'000; // of an axis; more than pixels of any screen
constexpr double kAtAxis = 0.000001;       // nearer to the minimum than this there is no grid line, the axis is there

/// The positions from `begin` by `step` up to `end`, each the one before plus the step, so that the axis shows the
/// positions that its caller would compute; none if that does not end soon.
std::vector<double> Positions(double begin, double end, double step) {
    std::vector<double> positions;
    if (!std::isfinite(begin) || !std::isfinite(end) || !std::isfinite(step))
        return {};
    double at = begin;
    while (at <= end) {
        if (positions.size() == kMostTicks || at + step == at)
            return {};
        positions.push_back(at);
        at += step;
    }
    return positions;
}

} // namespace

int PlotGeometry::DataToWndX(double x) const {
    return m_margins.left + TruncatedPixel(PlotWidth() * ((x - m_range.minX) / DataRangeX()));
}

int PlotGeometry::DataToWndY(double y) const {
    return PlotMaxY() - TruncatedPixel(PlotHeight() * ((y - m_range.minY) / DataRangeY()));
}

// As above, without a branch or a call, for the compiler to do several at a time.
void PlotGeometry::DataToWnd(std::span<PlotPoint const> points, std::span<Point> pixels) const {
    double const width = PlotWidth();
    double const height = PlotHeight();
    double const rangeX = DataRangeX();
    double const rangeY = DataRangeY();
    PlotRange const range = m_range;
    int const left = m_margins.left;
    int const bottom = PlotMaxY();
    for (std::size_t i = 0; i < points.size(); ++i) {
        double const x = width * ((points[i].x - range.minX) / rangeX);
        double const y = height * ((points[i].y - range.minY) / rangeY);
        pixels[i] = {left + TruncatedPixel(x), bottom - TruncatedPixel(y)};
    }
}

int PlotGeometry::DataToWndSX(double width) const { return TruncatedPixel(PlotWidth() / DataRangeX() * width); }
int PlotGeometry::DataToWndSY(double height) const { return TruncatedPixel(PlotHeight() / DataRangeY() * height); }

double PlotGeometry::WndToDataX(int x) const {
    return static_cast<double>(x - m_margins.left) / PlotWidth() * DataRangeX() + m_range.minX;
}

double PlotGeometry::WndToDataY(int y) const {
    return static_cast<double>(PlotMaxY() - y) / PlotHeight() * DataRangeY() + m_range.minY;
}

int PlotGeometry::NumberOfXLabels() const { return TruncatedPixel(DataRangeX() / m_range.tickX); }

TickMark PlotGeometry::MarkX(double position, DString label) const {
    int const pixel = DataToWndX(position);
    // The spacing decides here even where the marks stand at the points.
    double const half = DataToWndSX(m_range.tickX) * 0.5;
    Rect const labelRect{TruncatedPixel(pixel - half), PlotMaxY() + 6, TruncatedPixel(pixel + half), PlotMaxY() + 16};
    return {position, pixel, std::move(label), labelRect, std::abs(position - m_range.minX) >= kAtAxis};
}

std::vector<TickMark> PlotGeometry::TickMarksX() const {
    std::vector<TickMark> marks;
    if (!(m_range.tickX > 0))
        return marks;
    for (double const position : Positions(m_range.minX, m_range.maxX, m_range.tickX))
        marks.push_back(MarkX(position, XLabel(position)));
    return marks;
}

std::vector<TickMark> PlotGeometry::TickMarksAt(std::span<PlotPoint const> points,
                                                std::span<DString const *const> labels) const {
    std::vector<TickMark> marks;
    std::set<std::pair<int, DString>> seen;
    for (std::size_t i = 0; i < points.size(); ++i) {
        double const x = points[i].x;
        if (!std::isfinite(x))
            continue;
        bool const isNamed = i < labels.size() && labels[i] != nullptr && !labels[i]->empty();
        DString label = isNamed ? *labels[i] : XLabel(x);
        if (!seen.emplace(DataToWndX(x), label).second)
            continue;
        if (marks.size() == kMostTicks)
            return {};
        marks.push_back(MarkX(x, std::move(label)));
    }
    return marks;
}

std::vector<TickMark> PlotGeometry::TickMarksY() const {
    std::vector<TickMark> marks;
    std::vector<double> positions;
    if (m_range.tickY > 0)
        positions = Positions(m_range.minY, m_range.maxY, m_range.tickY);
    else if (std::isfinite(m_range.minY) && m_range.tickY <= 0)
        positions = {m_range.minY};
    for (double const position : positions) {
        int const pixel = DataToWndY(position);
        marks.push_back({position,
                         pixel,
                         YLabel(position),
                         {m_margins.left - 46, pixel - 6, m_margins.left - 6, pixel + 6},
                         std::abs(position - m_range.minY) >= kAtAxis});
    }
    return marks;
}

Rect PlotGeometry::TitleRect() const { return {m_margins.left, 10, PlotMaxX(), m_margins.top - 10}; }
Rect PlotGeometry::CaptionXRect() const { return {m_margins.left, PlotMaxY() + 18, PlotMaxX(), PlotMaxY() + 30}; }
Rect PlotGeometry::CaptionYRect() const {
    return {m_margins.left - 60, m_margins.top, m_margins.left - 50, PlotMaxY()};
}

Point RotatedTextOrigin(Size text, Rect const &rect, double degrees) {
    double const angle = degrees * 0.017453292522222223;
    int const halfWidth = text.cx / 2;
    int const halfHeight = text.cy / 2;
    double const dx = halfWidth * std::cos(angle) - halfHeight * std::sin(angle);
    double const dy = std::sin(angle) * halfWidth + halfHeight * std::cos(angle);
    return {rect.Width() / 2 - TruncatedPixel(dx) + rect.left, rect.top + rect.Height() / 2 + TruncatedPixel(dy)};
}

} // namespace zelvar
