#include "zelvar/data/wire/ConnectionOrder.h"

#include "zelvar/data/wire/Messages.h"

#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace zelvar::wire {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
constexpr off_t kLongest = off_t{1} << 20U;

bool WriteAll(int file, MessageChannel::Bytes const &bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t const count = write(file, bytes.data() + done, bytes.size() - done);
        if (count <= 0)
            return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

int SealOrder(ConnectionOrderT const &order) {
    MessageChannel::Bytes bytes = Pack(order);
    FileDescriptor file(memfd_create("zelvar", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    bool const isSealed = file.IsOpen() && fchmod(file.Get(), S_IRUSR | S_IWUSR) == 0 && WriteAll(file.Get(), bytes) &&
                          fcntl(file.Get(), F_ADD_SEALS, kSeals) == 0;
    explicit_bzero(bytes.data(), bytes.size());
    return isSealed ? file.Release() : -1;
}

std::unique_ptr<ConnectionOrderT> UnsealOrder(int file) {
    FileDescriptor const owner(file);
    struct stat info {};
    int const seals = fcntl(file, F_GET_SEALS);
    if (seals < 0 || (seals & kSeals) != kSeals || fstat(file, &info) != 0 || info.st_size > kLongest)
        return nullptr;
    MessageChannel::Bytes bytes(static_cast<std::size_t>(info.st_size));
    bool const isRead = pread(file, bytes.data(), bytes.size(), 0) == info.st_size;
    auto order = isRead ? Unpack<ConnectionOrder>(bytes) : nullptr;
    explicit_bzero(bytes.data(), bytes.size());
    return order;
}

} // namespace zelvar::wire
