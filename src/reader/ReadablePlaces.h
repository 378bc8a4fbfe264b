#pragma once

#include "zelvar/data/Connection.h"

namespace zelvar::reader {

/// Files and folders that a reader of a connection needs: the system's libraries and what they read, those of the
/// modules and this program, its own process, certificates, and what holds the user's logins for services of that kind.
/// Asked before the process is confined.
[[nodiscard]] std::vector<DString> PlacesToRead(ConnectionTerms const &terms, std::vector<DString> const &modules);

} // namespace zelvar::reader
