#include "zelvar/data/wire/ConnectionOrder.h"

#include "zelvar/data/wire/Messages.h"
#include "zelvar/data/wire/SealedMemory.h"

#include <cstring>

#include <sys/stat.h>

namespace zelvar::wire {

namespace {

constexpr std::size_t kLongest = std::size_t{1} << 20U;

} // namespace

int SealOrder(ConnectionOrderT const &order) {
    MessageChannel::Bytes bytes = Pack(order);
    FileDescriptor file = SealBytes({bytes});
    explicit_bzero(bytes.data(), bytes.size());
    bool const isOwn = file.IsOpen() && fchmod(file.Get(), S_IRUSR | S_IWUSR) == 0;
    return isOwn ? file.Release() : -1;
}

std::unique_ptr<ConnectionOrderT> UnsealOrder(int file) {
    FileDescriptor const owner(file);
    auto bytes = UnsealBytes(file, kLongest);
    if (!bytes)
        return nullptr;
    auto order = Unpack<ConnectionOrder>(*bytes);
    explicit_bzero(bytes->data(), bytes->size());
    return order;
}

} // namespace zelvar::wire
