#include "zelvar/data/wire/ConnectRecords.h"

#include "zelvar/data/wire/FileNote.h"

#include <cerrno>

namespace zelvar::wire {

bool SendBytes(int socket, void const *bytes, std::size_t size, int file) {
    iovec part{const_cast<void *>(bytes), size};
    msghdr out{};
    out.msg_iov = &part;
    out.msg_iovlen = 1;
    FileNote note{};
    if (file >= 0)
        PutFile(out, note, file);
    ssize_t sent = 0;
    do
        sent = sendmsg(socket, &out, MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(size);
}

bool ReceiveBytes(int socket, void *bytes, std::size_t size, int &file) {
    iovec part{bytes, size};
    FileNote note{};
    msghdr in{};
    in.msg_iov = &part;
    in.msg_iovlen = 1;
    in.msg_control = note.bytes.data();
    in.msg_controllen = note.bytes.size();
    ssize_t got = 0;
    do
        got = recvmsg(socket, &in, MSG_CMSG_CLOEXEC);
    while (got < 0 && errno == EINTR);
    file = got < 0 ? -1 : TakeFile(in);
    bool const isWhole = got == static_cast<ssize_t>(size) && (in.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
    if (!isWhole && file >= 0)
        close(std::exchange(file, -1));
    return isWhole;
}

} // namespace zelvar::wire
