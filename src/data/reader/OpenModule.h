#pragma once

#include "zelvar/base/DString.h"

namespace zelvar {

/// The file name of the installed module of drivers over GDAL.
inline constexpr char kGdalModule[] = "zelvar-gdal.so";

/// Loads a module of drivers for good and yields what `dlopen` gives: null if it cannot be loaded, and `dlerror` tells.
/// Before the one over GDAL the libraries below GDAL are loaded one by one, those first that others need.
ZELVAR_API void *OpenModule(DString const &path);

} // namespace zelvar
