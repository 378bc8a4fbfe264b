#pragma once

#include "zelvar/charts/core/PlotGeometry.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace zelvar {

/// The point that a click at `x` (data units) picks: the nearest by x alone, of equal ones the first; nothing if it
/// lies more than five pixels away, or is `former`: a second click on a point lets go of it.
[[nodiscard]] ZELVAR_API std::optional<std::size_t>
PickPoint(PlotGeometry const &geometry, std::span<PlotPoint const> points, double x, std::optional<std::size_t> former);

/// Steps through points with a key.
enum class PlotStep : std::uint8_t { First, Previous, Next, Last };
/// The point that a step leads to, in the order of x and, where that is equal, as they were added; points without a
/// finite x are passed over. Without a point to start at, `Next` begins at the first and `Previous` at the last. At an
/// end the same point again; nothing without points.
[[nodiscard]] ZELVAR_API std::optional<std::size_t> StepToPoint(std::span<PlotPoint const> points, PlotStep step,
                                                                std::optional<std::size_t> from);

} // namespace zelvar
