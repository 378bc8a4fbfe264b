#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/Connection.h"

namespace zelvar::reader {

/// Sets in this process's environment what the libraries of databases take from there: server, account, encryption, and
/// that sessions only read and no statement takes for ever. So names that they are given hold none of it. The password
/// is in memory without a name, which the environment names by its number: to be kept open as long as the process
/// lives. None without a password. While there is one thread; before changes of files are barred.
[[nodiscard]] FileDescriptor TellOfDatabase(ConnectionTerms const &terms);

} // namespace zelvar::reader
