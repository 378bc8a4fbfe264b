#pragma once

namespace zelvar {

/// Adds a driver for each of GDAL's formats to the managers, as a driver of each kind that it serves and as a plug-in,
/// "ZIP", "DataFolder", "Directory", "WebDirectory" and "SMB" to the tree manager, and "PostgreSQL" and "ODBC" to those
/// of trees and tables. To be called once, by the driver provider.
void RegisterGdalDrivers();

} // namespace zelvar
