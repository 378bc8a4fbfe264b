#pragma once

#include "zelvar/connections/Connection.h"

namespace zelvar {

/// The connection with what its service, a section of ~/.pg_service.conf or of the machine's file, says of host, port,
/// database and user where it does not say so itself. The same for one without a service.
[[nodiscard]] ZELVAR_API Connection WithServiceFields(Connection connection);

} // namespace zelvar
