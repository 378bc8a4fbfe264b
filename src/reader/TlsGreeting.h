#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ServerCertificate.h"
#include "zelvar/data/StopSignal.h"

#include <optional>

namespace zelvar::reader {

/// A certificate as a server has shown it.
struct ShownCertificate {
    ServerCertificate facts{};
    DString pem{}; ///< the same for libraries: the server's own alone, none of those that vouch for it
};

/// Connects to the server that the terms name as "server", over the broker where there is one, and greets it by TLS, as
/// a database's client where it is one: its certificate is taken as it is, nothing is asked. Else nothing, and why.
/// OpenSSL is loaded for it, as the libraries below GDAL do anyway. Waits until `stop`, as long as the terms
/// say ("seconds"), 10 seconds without.
[[nodiscard]] std::optional<ShownCertificate> GreetServer(ConnectionTerms const &terms, StopSignal const &stop,
                                                          DError &error);

/// From now on a certificate that is in a file of authorities needs nobody who vouches for it, in whatever uses OpenSSL
/// in this process. False if it cannot be told so.
[[nodiscard]] bool TrustListedCertificates();

} // namespace zelvar::reader
