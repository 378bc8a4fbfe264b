#pragma once

#include "zelvar/base/Export.h"

#include <cstdint>
#include <span>

namespace zelvar {

/// Sorts numbers of which no two are the same: in one pass where they lie close together.
ZELVAR_API void SortDistinct(std::span<std::uint32_t> numbers);

} // namespace zelvar
