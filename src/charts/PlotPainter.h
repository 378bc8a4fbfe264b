#pragma once

#include "zelvar/charts/ChartColors.h"
#include "zelvar/charts/core/PlotGeometry.h"

#include <optional>
#include <span>
#include <vector>

class QPainter;

namespace zelvar {

class OffscreenSurface;

/// Two lines that lead from the axes' upper end to their corner and on to their right end.
void DrawPlotAxes(QPainter &painter, PlotGeometry const &geometry, ChartColors const &colors);

/// What a plot says besides its points.
struct PlotTexts {
    DString title;
    DString captionX;
    DString captionY;
    std::vector<TickMark> ticksX;
    std::vector<TickMark> ticksY;
    int numXLabels = 0; ///< decides the size of the x labels
    bool drawGrid = true;
};
void DrawPlotTickMarks(QPainter &painter, PlotGeometry const &geometry, PlotTexts const &texts,
                       ChartColors const &colors);

/// Draws the points with their markers, and the lines between them. The picture is that of drawing each in turn, in
/// order; what falls on the same pixels is drawn once.
void DrawPlotData(OffscreenSurface &surface, PlotGeometry const &geometry, std::span<PlotPoint const> points,
                  bool withLines, std::optional<std::size_t> selected, ChartColors const &colors);

} // namespace zelvar
