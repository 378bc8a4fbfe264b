#pragma once

#include "zelvar/data/ServerCertificate.h"

namespace zelvar {

/// As `ReadServerCertificate`: asked by the reader of the connection, over its broker.
[[nodiscard]] std::optional<ServerCertificate> CertificateByReader(DString const &address);

} // namespace zelvar
