#include "zelvar/data/wire/SealedMemory.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace zelvar::wire {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

bool WriteAll(int file, std::span<std::uint8_t const> bytes) {
    while (!bytes.empty()) {
        ssize_t const count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

FileDescriptor SealBytes(std::initializer_list<std::span<std::uint8_t const>> parts) {
    FileDescriptor file(memfd_create("zelvar", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    bool isSealed = file.IsOpen();
    for (std::span<std::uint8_t const> const part : parts)
        isSealed = isSealed && WriteAll(file.Get(), part);
    isSealed = isSealed && fcntl(file.Get(), F_ADD_SEALS, kSeals | F_SEAL_SEAL) == 0;
    return isSealed ? std::move(file) : FileDescriptor(-1);
}

std::optional<std::size_t> SealedSize(int file) {
    struct stat info {};
    int const seals = fcntl(file, F_GET_SEALS);
    bool const isSealed = seals >= 0 && (seals & kSeals) == kSeals && fstat(file, &info) == 0 && info.st_size >= 0;
    return isSealed ? std::optional(static_cast<std::size_t>(info.st_size)) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> UnsealBytes(int file, std::size_t most) {
    auto const size = SealedSize(file);
    if (!size || *size > most)
        return std::nullopt;
    std::vector<std::uint8_t> bytes(*size);
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t const count = pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return std::nullopt;
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

} // namespace zelvar::wire
