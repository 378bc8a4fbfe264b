#pragma once

#include "zelvar/data/Connection.h"

namespace zelvar::gdal {

/// Makes settings of GDAL, which hold for this whole process, of what a connection's reader has been told: a reader
/// alone may call it.
void TellGdal(ConnectionTerms const &terms);

} // namespace zelvar::gdal
