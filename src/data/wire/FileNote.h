#pragma once

#include <array>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace zelvar::wire {

/// Room for one descriptor beside a message.
union FileNote {
    cmsghdr align;
    std::array<char, CMSG_SPACE(sizeof(int))> bytes;
};

/// Lets `message` carry a copy of `file`; `note` outlives the sending.
inline void PutFile(msghdr &message, FileNote &note, int file) {
    message.msg_control = note.bytes.data();
    message.msg_controllen = note.bytes.size();
    cmsghdr *const rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(rights), &file, sizeof file);
}

/// The descriptor in what was received; any others are closed. -1 if there is none.
inline int TakeFile(msghdr &message) {
    int taken = -1;
    for (cmsghdr *note = CMSG_FIRSTHDR(&message); note != nullptr; note = CMSG_NXTHDR(&message, note)) {
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

} // namespace zelvar::wire
