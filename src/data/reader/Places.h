#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// Where a moniker lies, told by its text and the kernel's table of mounts alone: the mount point, or the server of an
/// address.
[[nodiscard]] DString PlaceOfMoniker(DString const &moniker);

/// `DoesPlaceAnswer` through a reader: what holds whoever asks then holds the reader.
[[nodiscard]] bool AsksPlaceInReader(DString const &path);

} // namespace zelvar
