#include "zelvar/platform/os/LocalFolder.h"

#include "zelvar/base/FileDescriptor.h"

#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zelvar::platform {

namespace {

/// Zero nanoseconds mean unknown, so a file stamped at the very start of 1970 is told as a nanosecond later.
std::int64_t Nanoseconds(statx_timestamp const &stamp) {
    constexpr std::int64_t kLimit = 9'000'000'000; // seconds, about the year 2255, as far as nanoseconds reach
    constexpr std::int64_t kBillion = 1'000'000'000;
    if (stamp.tv_sec > kLimit || stamp.tv_sec < -kLimit)
        return 0;
    std::int64_t const time = stamp.tv_sec * kBillion + static_cast<std::int64_t>(stamp.tv_nsec);
    return time == 0 ? 1 : time;
}

std::optional<ShellKind> KindOfMode(unsigned mode) {
    if (S_ISREG(mode))
        return ShellKind::File;
    if (S_ISDIR(mode))
        return ShellKind::Directory;
    return std::nullopt;
}

/// An automount point is not mounted by being looked at.
constexpr int kFollow = AT_NO_AUTOMOUNT;

bool Stat(int folder, char const *name, unsigned wanted, struct statx &out) {
    return statx(folder, name, kFollow, wanted, &out) == 0;
}

/// The kernel's record of a directory entry.
struct KernelEntry {
    std::uint64_t inode;
    std::int64_t next;
    std::uint16_t length;
    std::uint8_t type;
    // the name follows, with a NUL at its end
};
constexpr std::size_t kNameOffset = offsetof(KernelEntry, type) + 1;

/// Fills in kind, size and time of the entry. False for what is no thing of the namespace, is gone, or isn't wanted.
bool Classify(int folder, std::uint8_t type, char const *name, ShellNamespace::FileTest const &wanted,
              ShellChild &child) {
    child.link = type == DT_LNK;
    child.size = -1;
    child.modified = 0;
    if (type == DT_DIR) {
        child.kind = ShellKind::Directory;
        return true;
    }
    if (type != DT_REG && type != DT_LNK && type != DT_UNKNOWN)
        return false;
    if (type == DT_REG && wanted && !wanted(child.name))
        return false;
    struct statx status {};
    if (!Stat(folder, name, STATX_TYPE | STATX_SIZE | STATX_MTIME, status))
        return false;
    std::optional<ShellKind> const kind = KindOfMode(status.stx_mode);
    if (!kind)
        return false;
    child.kind = *kind;
    if (*kind != ShellKind::File)
        return true;
    child.size = static_cast<std::int64_t>(status.stx_size);
    child.modified = Nanoseconds(status.stx_mtime);
    return type == DT_REG || !wanted || wanted(child.name);
}

} // namespace

std::optional<ShellKind> LocalKindOf(DString const &path) {
    struct statx status {};
    if (!Stat(AT_FDCWD, path.c_str(), STATX_TYPE, status))
        return std::nullopt;
    return KindOfMode(status.stx_mode);
}

std::optional<FileTimes> LocalTimesOf(DString const &path) {
    struct statx status {};
    if (!Stat(AT_FDCWD, path.c_str(), STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_ATIME | STATX_BTIME, status))
        return std::nullopt;
    FileTimes times;
    times.modified = Nanoseconds(status.stx_mtime);
    times.accessed = Nanoseconds(status.stx_atime);
    if ((status.stx_mask & STATX_BTIME) != 0)
        times.created = Nanoseconds(status.stx_btime);
    if (S_ISREG(status.stx_mode))
        times.size = static_cast<std::int64_t>(status.stx_size);
    return times;
}

std::optional<FolderIdentity> LocalIdentityOf(DString const &path) {
    struct statx status {};
    if (!Stat(AT_FDCWD, path.c_str(), STATX_TYPE | STATX_INO, status) || !S_ISDIR(status.stx_mode))
        return std::nullopt;
    return FolderIdentity{.device = std::uint64_t{status.stx_dev_major} << 32U | status.stx_dev_minor,
                          .inode = status.stx_ino};
}

bool EnumerateLocalFolder(DString const &path, ShellId const &folder, ShellNamespace::Visitor const &visit,
                          ShellNamespace::FileTest const &wanted) {
    FileDescriptor const directory(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!directory.IsOpen())
        return false;
    constexpr std::size_t kBufferSize = std::size_t{128} << 10U;
    std::unique_ptr<char[]> const buffer(new char[kBufferSize]);
    ShellChild child; // one for all, so that its text keeps its memory
    for (;;) {
        long const filled = syscall(SYS_getdents64, directory.Get(), buffer.get(), kBufferSize);
        if (filled <= 0) // 0 at the end; an error in the middle, as of a folder deleted meanwhile, ends a shorter list
            return true;
        for (char const *at = buffer.get(), *const end = at + filled; at < end;) {
            KernelEntry entry{};
            std::memcpy(&entry, at, kNameOffset);
            char const *const name = at + kNameOffset;
            at += entry.length;
            if (name[0] == '.' || name[0] == '\0') // hidden, "." and ".."
                continue;
            child.name.assign(name);
            if (!Classify(directory.Get(), entry.type, name, wanted, child))
                continue;
            child.id = folder.Child(child.name, child.kind);
            if (!visit(std::move(child)))
                return true;
        }
    }
}

} // namespace zelvar::platform
