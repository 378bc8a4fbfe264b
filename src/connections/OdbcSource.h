#pragma once

#include "zelvar/data/Connection.h"

namespace zelvar {

/// Puts what ~/.odbc.ini or the machine's list says of the data source that the terms name as "dsn" to their options,
/// under "odbc." and its key, and a password in it to their secrets. A reader looks into neither list: libraries open
/// the user's to write.
void TakeOdbcSource(ConnectionTerms &terms);

} // namespace zelvar
