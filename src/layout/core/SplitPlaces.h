#pragma once

#include "zelvar/base/Geometry.h"

#include <vector>

namespace zelvar {

/// Where a bar stands among those of its side, as numbers: the first along the side, the next across it within the
/// same stretch, and so on in turn. {1, 0} is the left or upper one of those that share the second stretch.
using SplitPlace = std::vector<int>;

/// The places of areas that were made by splitting, in the order of `areas`; `upright` for a side whose bars stand one
/// above the other. What no straight line parts is numbered as it comes.
[[nodiscard]] std::vector<SplitPlace> SplitPlaces(std::vector<Rect> const &areas, bool upright);

} // namespace zelvar
