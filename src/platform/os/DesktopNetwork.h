#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <memory>
#include <vector>

namespace zelvar::platform {

/// A file server that the desktop knows.
struct NetworkPlace {
    DString name;      ///< what the desktop calls it
    DString authority; ///< as in "smb://authority/"

    friend bool operator==(NetworkPlace const &, NetworkPlace const &) = default;
};

/// Whether a desktop is there to be asked. Reads the environment.
[[nodiscard]] bool IsInDesktopSession();

/// The file servers that the desktop's own service has found. Empty outside a desktop session, without GIO, and when
/// the service does not answer within a few seconds. Asks the desktop only; nothing is sent into the network from here.
[[nodiscard]] std::vector<NetworkPlace> ListDesktopNetwork();

/// Listens to the same service, without asking it anything: a sleeping thread. Null outside a desktop session, and
/// where the service tells no news. `place` is for tests.
[[nodiscard]] std::unique_ptr<NetworkListener> ListenToDesktopNetwork(char const *place = "network:///");

} // namespace zelvar::platform
