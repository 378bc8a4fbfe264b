#include "zelvar/data/wire/ConnectRecords.h"

#include "zelvar/data/wire/FileMessage.h"

namespace zelvar::wire {

bool SendBytes(int socket, void const *bytes, std::size_t size, int file) {
    iovec part{const_cast<void *>(bytes), size};
    return FileMessage(&part, 1).Send(socket, file, 0) == static_cast<ssize_t>(size);
}

bool ReceiveBytes(int socket, void *bytes, std::size_t size, int &file) {
    iovec part{bytes, size};
    FileMessage message(&part, 1);
    bool const isWhole = message.Receive(socket, file, 0) == static_cast<ssize_t>(size) && !message.IsCut();
    if (!isWhole && file >= 0)
        close(std::exchange(file, -1));
    return isWhole;
}

} // namespace zelvar::wire
