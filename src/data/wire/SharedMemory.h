#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/base/FileDescriptor.h"

#include <cstddef>
#include <memory>

namespace zelvar::wire {

/// Memory that two processes see. It has no name: it is gone with the last of them, however they end. Its size is
/// sealed, so that neither can take it from under the other.
class ZELVAR_API SharedMemory {
public:
    /// Null if there is no memory.
    static std::unique_ptr<SharedMemory> Create(std::size_t bytes);
    /// Maps what came from another process; takes `file` over. Null unless it is such memory with a sealed size.
    static std::unique_ptr<SharedMemory> Map(int file);
    ~SharedMemory();
    SharedMemory(SharedMemory const &) = delete;
    SharedMemory &operator=(SharedMemory const &) = delete;

    [[nodiscard]] void *Data() const { return m_data; }
    [[nodiscard]] std::size_t Size() const { return m_size; }
    /// Gives back the memory, in all processes: what was in it is zeros.
    void Clear();
    [[nodiscard]] int File() const { return m_file.Get(); }

private:
    SharedMemory(int file, void *data, std::size_t size) : m_file(file), m_data(data), m_size(size) {}

    FileDescriptor m_file;
    void *m_data;
    std::size_t m_size;
};

} // namespace zelvar::wire
