#include "zelvar/platform/os/FolderSlice.h"

#include "zelvar/platform/os/FileStatus.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelvar::platform {

namespace {

constexpr std::size_t kBufferSize = std::size_t{128} << 10U;

/// The kernel's record of a directory entry.
struct KernelEntry {
    std::uint64_t inode;
    std::int64_t next;
    std::uint16_t length;
    std::uint8_t type;
    // the name follows, with a NUL at its end
};
constexpr std::size_t kNameOffset = offsetof(KernelEntry, type) + 1;

bool CanBeAThing(unsigned char type) {
    return type == DT_DIR || type == DT_REG || type == DT_LNK || type == DT_UNKNOWN;
}

} // namespace

void FolderSlice::Clear() {
    m_entries.clear();
    m_names.clear();
    m_next.store(0, std::memory_order_relaxed);
    m_error = 0;
}

void FolderSlice::Add(std::string_view name, unsigned char type) {
    Entry &entry = m_entries.emplace_back();
    entry.name = static_cast<std::uint32_t>(m_names.size());
    entry.length = static_cast<std::uint32_t>(name.size());
    entry.type = type;
    if (type == DT_DIR)
        entry.kind = ShellKind::Directory;
    m_names.append(name);
    m_names += '\0';
}

void FolderSlice::LookAt(int folder) {
    constexpr std::size_t kTaken = 16; // at a time: few enough that no thread is left with much while the other waits
    for (;;) {
        std::size_t const first = m_next.fetch_add(kTaken, std::memory_order_relaxed);
        if (first >= m_entries.size())
            return;
        std::size_t const end = std::min(first + kTaken, m_entries.size());
        for (std::size_t i = first; i < end; ++i) {
            Entry &entry = m_entries[i];
            if (entry.type == DT_DIR)
                continue;
            errno = 0;
            std::optional<FileStatus> const status = ReadStatus(folder, m_names.c_str() + entry.name);
            if (!status) {
                // A link may lead where the user may not go; a file that is seen and not known is one left out.
                if (int const error = errno; entry.type == DT_REG && error != 0 && error != ENOENT)
                    m_error = error;
                continue;
            }
            entry.kind = status->kind;
            entry.file = status->file;
        }
    }
}

FolderReader::FolderReader(DString const &path)
    : m_directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC)),
      m_buffer(m_directory.IsOpen() ? new char[kBufferSize] : nullptr), m_error(m_directory.IsOpen() ? 0 : errno) {}

bool FolderReader::Refill() {
    long const filled = syscall(SYS_getdents64, m_directory.Get(), m_buffer.get(), kBufferSize);
    m_at = 0;
    m_end = filled > 0 ? static_cast<std::size_t>(filled) : 0;
    if (filled < 0 && errno != ENOENT)
        m_error = errno;
    return m_end != 0;
}

void FolderReader::Read(FolderSlice &slice, std::size_t limit, ShellNamespace::FileTest const &wanted) {
    slice.Clear();
    while (slice.Entries().size() < limit) {
        if (m_at == m_end && !Refill())
            return;
        KernelEntry entry{};
        std::memcpy(&entry, m_buffer.get() + m_at, kNameOffset);
        std::string_view const name(m_buffer.get() + m_at + kNameOffset);
        m_at += entry.length;
        bool const hidden = name.empty() || name.front() == '.';
        if (hidden || !CanBeAThing(entry.type))
            continue;
        using Wish = ShellNamespace::Wish;
        Wish const wish = entry.type != DT_REG || !wanted ? Wish::Yes : wanted(name);
        if (wish == Wish::Stop) {
            slice.Clear();
            return;
        }
        if (wish == Wish::Yes)
            slice.Add(name, entry.type);
    }
}

SliceHelper::~SliceHelper() {
    {
        std::lock_guard const lock(m_mutex);
        m_quit = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void SliceHelper::Begin(FolderSlice &slice) {
    std::lock_guard const lock(m_mutex);
    if (!m_thread.joinable()) {
        try {
            m_thread = std::thread([this] { Run(); });
        } catch (std::system_error const &) {
            return; // no thread to be had: the caller does all by itself
        }
    }
    m_slice = &slice;
    m_changed.notify_all();
}

void SliceHelper::Wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_slice == nullptr; });
}

void SliceHelper::Run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_slice != nullptr || m_quit; });
        if (m_slice == nullptr)
            return;
        FolderSlice &slice = *m_slice;
        lock.unlock();
        slice.LookAt(m_folder);
        lock.lock();
        m_slice = nullptr;
        m_changed.notify_all();
    }
}

} // namespace zelvar::platform
