#include "zelvar/data/wire/SharedMemory.h"

#include <tuple>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace zelvar::wire {

namespace {

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW;

} // namespace

std::unique_ptr<SharedMemory> SharedMemory::Create(std::size_t bytes) {
    int const file = memfd_create("zelvar", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file < 0)
        return nullptr;
    if (ftruncate(file, static_cast<off_t>(bytes)) != 0 || fcntl(file, F_ADD_SEALS, kSeals | F_SEAL_SEAL) != 0) {
        close(file);
        return nullptr;
    }
    return Map(file);
}

std::unique_ptr<SharedMemory> SharedMemory::Map(int file) {
    struct stat info {};
    int const seals = fcntl(file, F_GET_SEALS);
    bool const sealed = seals >= 0 && (seals & kSeals) == kSeals;
    if (!sealed || fstat(file, &info) != 0 || info.st_size <= 0) {
        close(file);
        return nullptr;
    }
    auto const size = static_cast<std::size_t>(info.st_size);
    void *const data = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (data == MAP_FAILED) {
        close(file);
        return nullptr;
    }
    return std::unique_ptr<SharedMemory>(new SharedMemory(file, data, size));
}

void SharedMemory::Clear() {
    std::ignore = fallocate(m_file.Get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(m_size));
}

SharedMemory::~SharedMemory() { munmap(m_data, m_size); }

} // namespace zelvar::wire
