#include "Folders.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelvar::bench {

Folder::Folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zelvar-bench-XXXXXX").string();
    m_path = mkdtemp(pattern.data()) == nullptr ? std::string() : pattern;
}

Folder::~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void MakeFile(std::string const &folder, unsigned number, char const *extension, std::string_view bytes) {
    unsigned const shuffled = number * 7919U % 1'000'003U;
    std::string const path =
        folder + "/Scene_" + std::to_string(shuffled) + " of " + std::to_string(number % 97) + extension;
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    std::ignore = write(file, bytes.data(), bytes.size());
    std::ignore = ftruncate(file, static_cast<off_t>(bytes.size() + (bytes.empty() ? shuffled % 5000 : 0)));
    timespec const stamp{1'600'000'000 + static_cast<time_t>(shuffled) * 150, 0};
    timespec const times[] = {stamp, stamp};
    std::ignore = futimens(file, times);
    close(file);
}

namespace {
constexpr std::array kExtensions{".tif", ".txt", ".jpg", ".png", ".csv", ".dat", ".xml", ".bmp", ".tfw", ""};
} // namespace

void Fill(std::string const &folder, unsigned count) {
    for (unsigned i = 0; i < count; ++i)
        MakeFile(folder, i, kExtensions[i % kExtensions.size()], {});
}

std::size_t ListBare(std::string const &path) {
    struct Entry {
        std::uint64_t inode;
        std::int64_t next;
        std::uint16_t length;
        std::uint8_t type;
    };
    static std::vector<char> buffer(std::size_t{128} << 10U);
    int const folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::size_t bytes = 0;
    for (long filled = 0; (filled = syscall(SYS_getdents64, folder, buffer.data(), buffer.size())) > 0;)
        for (char const *at = buffer.data(), *end = at + filled; at < end;) {
            Entry entry{};
            std::memcpy(&entry, at, offsetof(Entry, type) + 1);
            char const *const name = at + offsetof(Entry, type) + 1;
            struct statx status {};
            if (name[0] != '.' &&
                statx(folder, name, AT_NO_AUTOMOUNT, STATX_TYPE | STATX_SIZE | STATX_MTIME, &status) == 0)
                bytes += status.stx_size + static_cast<std::size_t>(status.stx_mtime.tv_sec & 1);
            at += entry.length;
        }
    close(folder);
    return bytes;
}

} // namespace zelvar::bench
