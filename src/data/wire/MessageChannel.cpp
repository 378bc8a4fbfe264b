#include "zelvar/data/wire/MessageChannel.h"

#include "zelvar/data/wire/FileMessage.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace zelvar::wire {

namespace {

constexpr std::uint32_t kMark = 0x5A4C5652;
constexpr std::size_t kFirstBody = std::size_t{1} << 20U; // taken before any of a message has come; then it doubles

} // namespace

MessageChannel::MessageChannel(int socket) : m_socket(socket) {}

MessageChannel::~MessageChannel() {
    if (m_file >= 0)
        close(m_file);
}

MessageChannel::Result MessageChannel::WaitFor(short events, Clock::time_point deadline) const {
    while (true) {
        int timeout = -1;
        if (deadline != Forever()) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, 1'000'000));
        }
        pollfd wanted{.fd = m_socket.Get(), .events = events, .revents = 0};
        int const count = poll(&wanted, 1, timeout);
        if (count > 0)
            return (wanted.revents & (events | POLLHUP)) != 0 ? Result::Done : Result::Gone;
        if (count == 0)
            return Result::Late;
        if (errno != EINTR)
            return Result::Gone;
    }
}

MessageChannel::Result MessageChannel::Send(std::span<std::uint8_t const> message, int file,
                                            Clock::time_point deadline) {
    Head head{.mark = kMark, .length = static_cast<std::uint32_t>(message.size())};
    std::size_t const total = sizeof head + message.size();
    if (message.size() > kLongest)
        return Result::Damaged;
    for (std::size_t done = 0; done < total;) {
        std::array<iovec, 2> parts{};
        std::size_t const headLeft = done < sizeof head ? sizeof head - done : 0;
        std::size_t const bodyDone = done < sizeof head ? 0 : done - sizeof head;
        parts[0] = {reinterpret_cast<char *>(&head) + (sizeof head - headLeft), headLeft};
        parts[1] = {const_cast<std::uint8_t *>(message.data()) + bodyDone, message.size() - bodyDone};
        FileMessage out(parts.data(), parts.size());
        ssize_t const sent = out.Send(m_socket.Get(), done == 0 ? file : -1, MSG_DONTWAIT);
        if (sent > 0) {
            done += static_cast<std::size_t>(sent);
        } else if (sent < 0 && (errno == EAGAIN || errno == ENOBUFS)) {
            if (Result const waited = WaitFor(POLLOUT, deadline); waited != Result::Done)
                return waited;
        } else {
            return Result::Gone;
        }
    }
    return Result::Done;
}

MessageChannel::Result MessageChannel::ReceiveHead(Clock::time_point deadline) {
    while (m_headBytes < sizeof m_head) {
        iovec part{reinterpret_cast<char *>(&m_head) + m_headBytes, sizeof m_head - m_headBytes};
        int file = -1;
        ssize_t const got = FileMessage(&part, 1).Receive(m_socket.Get(), file, MSG_DONTWAIT);
        if (got > 0) {
            if (file >= 0) {
                if (int const former = std::exchange(m_file, file); former >= 0) {
                    close(former);
                    return Result::Damaged;
                }
            }
            m_headBytes += static_cast<std::size_t>(got);
        } else if (got < 0 && errno == EAGAIN) {
            if (Result const waited = WaitFor(POLLIN, deadline); waited != Result::Done)
                return waited;
        } else {
            return Result::Gone;
        }
    }
    return m_head.mark == kMark && m_head.length <= kLongest ? Result::Done : Result::Damaged;
}

MessageChannel::Result MessageChannel::Receive(Bytes &message, int &file, Clock::time_point deadline) {
    if (Result const head = ReceiveHead(deadline); head != Result::Done)
        return head;
    while (m_bodyBytes < m_head.length) {
        // A length is not believed before as much has come.
        std::size_t const room = std::min<std::size_t>(m_head.length, std::max(kFirstBody, 2 * m_bodyBytes));
        if (m_body.size() < room)
            m_body.resize(room);
        ssize_t const got =
            recv(m_socket.Get(), m_body.data() + m_bodyBytes, m_body.size() - m_bodyBytes, MSG_DONTWAIT);
        if (got > 0) {
            m_bodyBytes += static_cast<std::size_t>(got);
        } else if (got < 0 && errno == EAGAIN) {
            if (Result const waited = WaitFor(POLLIN, deadline); waited != Result::Done)
                return waited;
        } else if (got == 0 || errno != EINTR) {
            return Result::Gone;
        }
    }
    m_body.resize(m_head.length);
    message.swap(m_body);
    m_body.clear();
    m_headBytes = 0;
    m_bodyBytes = 0;
    file = std::exchange(m_file, -1);
    return Result::Done;
}

} // namespace zelvar::wire
