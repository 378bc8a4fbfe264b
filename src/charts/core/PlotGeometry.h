#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Geometry.h"

#include <span>
#include <vector>

namespace zelvar {

/// Room around the drawn area of a chart, pixels.
struct ChartMargins {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

/// What the axes of a plot show, in data units.
struct PlotRange {
    double minX = 0;
    double minY = 0;
    double maxX = 0;
    double maxY = 0;
    double tickX = 1; ///< between two tick marks
    double tickY = 1;
};

/// A tick mark with its label.
struct TickMark {
    double position = 0; ///< data units
    int pixel = 0;       ///< along its axis
    DString label;
    Rect labelRect; ///< may be wider or narrower than the text
    bool hasGrid = false;
};

/// A point as the rules see it.
struct PlotPoint {
    double x = 0;
    double y = 0;
};

/// Where everything of a plot lies, in logical pixels of its client area. Painting, hit testing, the accessible
/// interface and the tests ask the same object.
class ZELVAR_API PlotGeometry {
public:
    // How the marks of the axes are written. That the two differ is wanted.
    [[nodiscard]] static DString XLabel(double position) { return Format("%.2g", position); }
    [[nodiscard]] static DString YLabel(double position) { return Format("%.2f", position); }

    PlotGeometry(Size client, ChartMargins margins, PlotRange range)
        : m_client(client), m_margins(margins), m_range(range) {}

    [[nodiscard]] int PlotMinX() const { return m_margins.left; }
    [[nodiscard]] int PlotMinY() const { return m_margins.top; }
    [[nodiscard]] int PlotMaxX() const { return m_client.cx - m_margins.right; }
    [[nodiscard]] int PlotMaxY() const { return m_client.cy - m_margins.bottom; }
    [[nodiscard]] int PlotWidth() const { return PlotMaxX() - PlotMinX(); }
    [[nodiscard]] int PlotHeight() const { return PlotMaxY() - PlotMinY(); }
    [[nodiscard]] double DataRangeX() const { return m_range.maxX - m_range.minX; }
    [[nodiscard]] double DataRangeY() const { return m_range.maxY - m_range.minY; }
    [[nodiscard]] PlotRange const &Range() const { return m_range; }

    // Data units to pixels are cut towards zero; what is not finite comes out far outside or at the axis.
    [[nodiscard]] int DataToWndX(double x) const;
    [[nodiscard]] int DataToWndY(double y) const;
    /// The same for many points: `pixels` has as many places.
    void DataToWnd(std::span<PlotPoint const> points, std::span<Point> pixels) const;
    [[nodiscard]] int DataToWndSX(double width) const; ///< a distance
    [[nodiscard]] int DataToWndSY(double height) const;
    [[nodiscard]] double WndToDataX(int x) const;
    [[nodiscard]] double WndToDataY(int y) const;

    /// In the range of both axes, edges included: such a point has a marker.
    [[nodiscard]] bool IsInRange(PlotPoint point) const {
        return point.x >= m_range.minX && point.x <= m_range.maxX && point.y >= m_range.minY && point.y <= m_range.maxY;
    }
    /// In the drawn area, edges included: a click there selects.
    [[nodiscard]] bool IsInPlot(Point place) const {
        return place.x >= PlotMinX() && place.x <= PlotMaxX() && place.y >= PlotMinY() && place.y <= PlotMaxY();
    }

    /// No tick marks are drawn where an axis runs backwards.
    [[nodiscard]] bool HasTickMarks() const { return !(m_range.minX > m_range.maxX || m_range.minY > m_range.maxY); }
    /// How many labels the x axis is said to have when its font is chosen.
    [[nodiscard]] int NumberOfXLabels() const;
    /// Marks by the spacing. None for a spacing or range that is no number, that does not end, or that is finer than
    /// any screen shows.
    [[nodiscard]] std::vector<TickMark> TickMarksX() const;
    /// One mark for each position, with the label given or, where that is empty, the number. Marks that look the same
    /// are there once; more than any screen shows are none.
    [[nodiscard]] std::vector<TickMark> TickMarksAt(std::span<PlotPoint const> points,
                                                    std::span<DString const *const> labels) const;
    /// As `TickMarksX`; a spacing of 0 or below gives the mark at the minimum alone.
    [[nodiscard]] std::vector<TickMark> TickMarksY() const;

    [[nodiscard]] Rect TitleRect() const;
    [[nodiscard]] Rect CaptionXRect() const;
    [[nodiscard]] Rect CaptionYRect() const;

private:
    [[nodiscard]] TickMark MarkX(double position, DString label) const;

    Size m_client;
    ChartMargins m_margins;
    PlotRange m_range;
};

/// Where a text that is turned about its middle begins, so that it is centred in a rectangle: the place of its
/// baseline. `degrees` is counted against the clock.
[[nodiscard]] ZELVAR_API Point RotatedTextOrigin(Size text, Rect const &rect, double degrees);

} // namespace zelvar
