#pragma once

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

namespace zelvar::wire {

/// What is sent or received by one call: bytes in some pieces, and beside them a descriptor if need be.
class FileMessage {
public:
    /// `parts` outlives this.
    FileMessage(iovec *parts, std::size_t count) {
        m_head.msg_iov = parts;
        m_head.msg_iovlen = count;
    }
    FileMessage(FileMessage const &) = delete;
    FileMessage &operator=(FileMessage const &) = delete;

    /// As `sendmsg`, again where a signal came between; a copy of `file` goes along unless it is below 0.
    ssize_t Send(int socket, int file, int flags) {
        if (file >= 0)
            PutFile(file);
        return Repeat([&] { return sendmsg(socket, &m_head, MSG_NOSIGNAL | flags); });
    }
    /// As `recvmsg`; `file` gets the descriptor that came along, the caller's then, or -1. Any others are closed.
    ssize_t Receive(int socket, int &file, int flags) {
        m_head.msg_control = m_note.data();
        m_head.msg_controllen = m_note.size();
        ssize_t const got = Repeat([&] { return recvmsg(socket, &m_head, MSG_CMSG_CLOEXEC | flags); });
        file = got < 0 ? -1 : TakeFile();
        return got;
    }
    /// Of what came: that some of it had no room.
    [[nodiscard]] bool IsCut() const { return (m_head.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0; }

private:
    template <class Call>
    static ssize_t Repeat(Call const &call) {
        ssize_t result = 0;
        do
            result = call();
        while (result < 0 && errno == EINTR);
        return result;
    }
    void PutFile(int file) {
        m_head.msg_control = m_note.data();
        m_head.msg_controllen = m_note.size();
        cmsghdr *const rights = CMSG_FIRSTHDR(&m_head);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof file);
        std::memcpy(CMSG_DATA(rights), &file, sizeof file);
    }
    int TakeFile() {
        int taken = -1;
        for (cmsghdr *note = CMSG_FIRSTHDR(&m_head); note != nullptr; note = CMSG_NXTHDR(&m_head, note)) {
            if (note->cmsg_level != SOL_SOCKET || note->cmsg_type != SCM_RIGHTS)
                continue;
            std::size_t const count = (note->cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (std::size_t i = 0; i < count; ++i) {
                int file = -1;
                std::memcpy(&file, CMSG_DATA(note) + i * sizeof(int), sizeof file);
                if (int const former = std::exchange(taken, file); former >= 0)
                    close(former);
            }
        }
        return taken;
    }

    msghdr m_head{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> m_note{};
};

} // namespace zelvar::wire
