#pragma once

#include "zelvar/base/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace zelvar::wire {

// What a reader that may not connect asks of its application, and what it gets, over a socket of its own that keeps
// records apart. One question has one answer; a connection comes as a descriptor beside it. Over the same socket go
// notes: what one reader of a connection knows, for the other one, as sealed memory.

/// Bytes of the longest note.
inline constexpr std::size_t kLongestNote = std::size_t{49} << 20U;

/// A number of a host on the network.
struct HostNumber {
    std::uint32_t isSix = 0; ///< IPv6; else the first four bytes count
    std::array<std::uint8_t, 16> bytes{};
    friend bool operator<(HostNumber const &a, HostNumber const &b) {
        return a.isSix != b.isSix ? a.isSix < b.isSix : a.bytes < b.bytes;
    }
};

struct ConnectQuestion {
    enum Kind : std::uint32_t {
        Resolve = 1,
        Connect = 2,
        KeepNote = 3, ///< the memory comes along
        FindNote = 4,
    };
    std::uint32_t kind = 0;
    std::uint32_t port = 0;       ///< 0 for not known, which a name alone may have
    HostNumber number{};          ///< to connect to
    std::array<char, 256> name{}; ///< of a host, or of a note
};

struct ConnectAnswer {
    std::int32_t error = 0; ///< of the system; 0 for none
    std::uint32_t count = 0;
    std::uint32_t age = 0;               ///< of a note, seconds
    std::array<HostNumber, 8> numbers{}; ///< of the name, so many
};

/// Sends one record, with a copy of `file` unless it is below 0. False if the other end has gone or reads nothing.
template <class Record>
[[nodiscard]] bool SendRecord(int socket, Record const &record, int file = -1);
/// Waits for one record; `file` gets the descriptor that came with it, the caller's then, or -1. False if the other end
/// has gone or what came is no such record.
template <class Record>
[[nodiscard]] bool ReceiveRecord(int socket, Record &record, int &file);

[[nodiscard]] ZELVAR_API bool SendBytes(int socket, void const *bytes, std::size_t size, int file);
[[nodiscard]] ZELVAR_API bool ReceiveBytes(int socket, void *bytes, std::size_t size, int &file);

template <class Record>
bool SendRecord(int socket, Record const &record, int file) {
    return SendBytes(socket, &record, sizeof record, file);
}
template <class Record>
bool ReceiveRecord(int socket, Record &record, int &file) {
    return ReceiveBytes(socket, &record, sizeof record, file);
}

} // namespace zelvar::wire
