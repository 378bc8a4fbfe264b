#include "zelvar/platform/os/FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>

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

std::uint64_t DeviceOf(struct statx const &answer) {
    return std::uint64_t{answer.stx_dev_major} << 32U | answer.stx_dev_minor;
}

bool Ask(int folder, char const *name, unsigned wanted, struct statx &out) {
    return statx(folder, name, AT_NO_AUTOMOUNT, wanted, &out) == 0 && (S_ISREG(out.stx_mode) || S_ISDIR(out.stx_mode));
}

} // namespace

std::optional<FileStatus> ReadStatus(int folder, char const *name) {
    struct statx answer; // NOLINT(cppcoreguidelines-pro-type-member-init): the system fills it
    if (!Ask(folder, name, STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_CTIME | STATX_INO, answer))
        return std::nullopt;
    if (S_ISDIR(answer.stx_mode))
        return FileStatus{.kind = ShellKind::Directory};
    return FileStatus{.kind = ShellKind::File,
                      .file = {.device = DeviceOf(answer),
                               .inode = answer.stx_ino,
                               .size = static_cast<std::int64_t>(answer.stx_size),
                               .modified = Nanoseconds(answer.stx_mtime),
                               .changed = Nanoseconds(answer.stx_ctime)}};
}

std::optional<FileTimes> ReadTimes(char const *path) {
    struct statx answer {};
    if (!Ask(AT_FDCWD, path, STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_ATIME | STATX_BTIME, answer))
        return std::nullopt;
    FileTimes times;
    times.modified = Nanoseconds(answer.stx_mtime);
    times.accessed = Nanoseconds(answer.stx_atime);
    if ((answer.stx_mask & STATX_BTIME) != 0)
        times.created = Nanoseconds(answer.stx_btime);
    if (S_ISREG(answer.stx_mode))
        times.size = static_cast<std::int64_t>(answer.stx_size);
    return times;
}

std::optional<FolderIdentity> ReadIdentity(char const *path) {
    struct statx answer {};
    if (!Ask(AT_FDCWD, path, STATX_TYPE | STATX_INO, answer) || !S_ISDIR(answer.stx_mode))
        return std::nullopt;
    return FolderIdentity{.device = DeviceOf(answer), .inode = answer.stx_ino};
}

} // namespace zelvar::platform
