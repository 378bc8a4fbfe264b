#pragma once

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace zelvar::platform {

/// Some entries of a local folder, on their way from the directory to a visitor. Several threads may look at the
/// entries of one slice at once; all else is for one thread at a time.
class FolderSlice {
public:
    struct Entry {
        std::uint32_t name = 0;          ///< where it begins in the slice's text; a NUL ends it
        std::uint32_t length = 0;        ///< bytes of the name
        unsigned char type = 0;          ///< as the directory tells it, DT_...
        std::optional<ShellKind> kind{}; ///< nothing: no thing of the namespace, or gone
        FileState file{};                ///< plain files only
    };

    void Clear();
    void Add(std::string_view name, unsigned char type);
    /// Asks the system about the entries that no other thread has taken; folders need not be asked about.
    void LookAt(int folder);

    [[nodiscard]] std::vector<Entry> const &Entries() const { return m_entries; }
    [[nodiscard]] std::string_view NameOf(Entry const &entry) const {
        return std::string_view(m_names).substr(entry.name, entry.length);
    }
    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }
    /// Why plain files could not be looked at, other than that they have gone; none if all could.
    [[nodiscard]] std::error_code Error() const { return {m_error.load(), std::generic_category()}; }

private:
    std::vector<Entry> m_entries;
    std::string m_names;
    std::atomic<std::size_t> m_next{0}; ///< the first entry that nobody has taken
    std::atomic<int> m_error{0};
};

/// Reads the entries of an open directory, those left out that are hidden or can be no things of the namespace.
class FolderReader {
public:
    explicit FolderReader(DString const &path);
    [[nodiscard]] bool IsOpen() const { return m_directory.IsOpen(); }
    [[nodiscard]] int Descriptor() const { return m_directory.Get(); }
    /// Why it could not be opened, or not be read to its end. A folder deleted meanwhile is one at its end.
    [[nodiscard]] std::error_code Error() const { return {m_error, std::generic_category()}; }
    /// Fills `slice` with up to `limit` entries; empty at the end, and when `wanted` has ended it. Plain files that it
    /// refuses are left out.
    void Read(FolderSlice &slice, std::size_t limit, ShellNamespace::FileTest const &wanted);

private:
    bool Refill();

    FileDescriptor m_directory;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
    int m_error;
};

/// A second thread that looks at slices beside the caller's. It is started with the first slice it gets.
class SliceHelper {
public:
    explicit SliceHelper(int folder) : m_folder(folder) {}
    ~SliceHelper();
    SliceHelper(SliceHelper const &) = delete;
    SliceHelper &operator=(SliceHelper const &) = delete;

    /// Begins with `slice`, which stays where it is until `Wait`.
    void Begin(FolderSlice &slice);
    /// Returns when the helper has nothing more to do.
    void Wait();

private:
    void Run();

    int m_folder;
    std::thread m_thread;
    std::mutex m_mutex; ///< guards the two below
    FolderSlice *m_slice = nullptr;
    bool m_quit = false;
    std::condition_variable m_changed;
};

} // namespace zelvar::platform
