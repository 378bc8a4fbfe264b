#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

namespace zelvar::wire {

/// One end of a socket pair that carries whole messages, each with a file descriptor if need be.
///
/// The other end is not trusted: a length that is none, a torn message or a stranger's bytes end the talk. One thread
/// sends and one receives at a time.
class ZELVAR_API MessageChannel {
public:
    using Clock = std::chrono::steady_clock;
    using Bytes = std::vector<std::uint8_t>;
    /// Bytes of the longest message: the children of a node with a million members.
    static constexpr std::uint32_t kLongest = 512U << 20U;

    enum class Result {
        Done,
        Late,    ///< nothing whole before the deadline; what has come so far is kept
        Gone,    ///< the other end has closed
        Damaged, ///< the other end does not keep the form
    };

    /// Takes the socket over.
    explicit MessageChannel(int socket);
    ~MessageChannel();
    MessageChannel(MessageChannel const &) = delete;
    MessageChannel &operator=(MessageChannel const &) = delete;

    /// Sends one message. `file` below 0 for none; it stays the caller's.
    Result Send(std::span<std::uint8_t const> message, int file, Clock::time_point deadline);
    /// Receives one message. `file` gets the number of the descriptor that came with it, which the caller then owns, or
    /// -1.
    Result Receive(Bytes &message, int &file, Clock::time_point deadline);

    /// To wait on together with others.
    [[nodiscard]] int Socket() const { return m_socket.Get(); }
    static constexpr Clock::time_point Forever() { return Clock::time_point::max(); }

private:
    struct Head {
        std::uint32_t mark = 0;
        std::uint32_t length = 0;
    };
    Result ReceiveHead(Clock::time_point deadline);
    [[nodiscard]] Result WaitFor(short events, Clock::time_point deadline) const;

    FileDescriptor m_socket;
    Head m_head;                 ///< of the message under way
    std::size_t m_headBytes = 0; ///< of it that have come
    std::size_t m_bodyBytes = 0;
    Bytes m_body;
    int m_file = -1; ///< came with the message under way
};

} // namespace zelvar::wire
