#pragma once

#include "zelvar/data/StopSignal.h"
#include "zelvar/data/gdal/Source.h"

namespace zelvar::gdal {

/// Whether the process is a reader of a PostgreSQL database, where images are columns of rasters.
[[nodiscard]] bool HasPostgresRasters();

/// Whether images can be read of a raster whose schema, table or column is called so. GDAL's driver puts names between
/// quotes of both kinds as they are.
[[nodiscard]] bool IsReadableRasterName(DString const &name);

/// What GDAL opens for the address of a raster column; of a table with one such column its name does. It holds nothing
/// of the server or the login, which stand in the environment. Nothing, with the cause in `*error` (may be null), for
/// what is no raster or may not be read.
[[nodiscard]] std::optional<Source> ResolvePostgresRaster(BDIMoniker const &moniker, StopSignal const *stop,
                                                          DError *error);

} // namespace zelvar::gdal
