#pragma once

#include "zelvar/base/Export.h"

#include <cstdint>

namespace zelvar {

/// The instruction sets that kernels over samples exist for; `Plain` runs anywhere. Each set runs where those before it
/// do.
enum class Isa : std::uint8_t { Plain, Avx2, Avx512 };

/// Whether this machine's processor runs it.
[[nodiscard]] ZELVAR_API bool IsSupported(Isa isa);
/// The last one that it runs.
[[nodiscard]] ZELVAR_API Isa FastestIsa();

} // namespace zelvar
