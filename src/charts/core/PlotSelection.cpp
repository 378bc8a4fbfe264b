#include "zelvar/charts/core/PlotSelection.h"

#include "zelvar/charts/core/Truncation.h"

#include <cmath>
#include <utility>

namespace zelvar {

namespace {

constexpr double kFarthest = 1e12; // data units; a point has to be nearer than this
constexpr int kReach = 5;          // pixels

} // namespace

std::optional<std::size_t> PickPoint(PlotGeometry const &geometry, std::span<PlotPoint const> points, double x,
                                     std::optional<std::size_t> former) {
    double best = kFarthest;
    std::optional<std::size_t> candidate;
    for (std::size_t i = 0; i < points.size(); ++i) {
        double const distance = std::abs(x - points[i].x);
        if (distance < best) {
            best = distance;
            candidate = i;
        }
    }
    if (candidate == former)
        candidate.reset();
    if (geometry.DataToWndSX(best) > kReach)
        candidate.reset();
    return candidate;
}

std::optional<std::size_t> StepToPoint(std::span<PlotPoint const> points, PlotStep step,
                                       std::optional<std::size_t> from) {
    if (from && (*from >= points.size() || !std::isfinite(points[*from].x)))
        from.reset();
    bool const forward = step == PlotStep::Next || step == PlotStep::First;
    bool const toEnd = step == PlotStep::First || step == PlotStep::Last || !from;
    using Place = std::pair<double, std::size_t>;
    auto const placeOf = [&](std::size_t i) { return Place(points[i].x, i); };
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!std::isfinite(points[i].x))
            continue;
        bool const isBeyond = toEnd || (forward ? placeOf(i) > placeOf(*from) : placeOf(i) < placeOf(*from));
        if (isBeyond && (!best || (forward ? placeOf(i) < placeOf(*best) : placeOf(i) > placeOf(*best))))
            best = i;
    }
    return best ? best : from;
}

} // namespace zelvar
