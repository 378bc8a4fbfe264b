#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <span>
#include <vector>

namespace zelvar {

/// Whether a file of that name can stand beside another one that it belongs to: a first look that costs little.
[[nodiscard]] ZELVAR_API bool MayBeSidecar(std::string_view name);

/// For each of the names of files in one folder, the place of the file that it belongs to; its own place for one that
/// stands alone. What belongs to a file beside a third one belongs to that third one. Endings are compared without
/// regard to case, what stands before them exactly.
[[nodiscard]] ZELVAR_API std::vector<std::uint32_t> FindMasters(std::span<std::string_view const> names);

} // namespace zelvar
