#include "zelvar/base/Export.h"
#include "zelvar/data/gdal/GdalDrivers.h"

/// What the loader of the drivers looks up in this module by name.
extern "C" ZELVAR_API void zelvar_register_drivers();

extern "C" void zelvar_register_drivers() { zelvar::RegisterGdalDrivers(); }
