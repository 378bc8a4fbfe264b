#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/data/wire/ConnectRecords.h"

#include <chrono>
#include <vector>

namespace zelvar::reader {

/// The reader's end of the way to the application that connects for it. Any thread; who asks waits, one after the
/// other.
class BrokerClient {
public:
    /// From now on `connect` and `getaddrinfo` of this process ask over `socket`, which stays open. Once.
    static void Use(int socket);
    /// Whether they do.
    [[nodiscard]] static bool IsUsed();

    /// A connection to that host and port; the descriptor is the caller's. -1 if there is none, and `errno` says why.
    static int Connect(wire::HostNumber const &number, std::uint16_t port);
    /// `file` is a connection from now on, however long.
    static void Note(int file);
    /// Ends all connections: whoever waits for one is told so by the system at once. Their descriptors stay.
    static void CutOff();
    /// The numbers of a host; none if it is unknown, or may not be reached. Port 0 if it is not known.
    static std::vector<wire::HostNumber> Resolve(char const *name, std::uint16_t port);

    /// Gives sealed memory to the application, for readers of this connection that ask for it by that name.
    static void KeepNote(char const *name, int file);
    /// What was given under that name in the last minutes; not open for nothing.
    static FileDescriptor FindNote(char const *name, std::chrono::seconds &age);
};

} // namespace zelvar::reader
