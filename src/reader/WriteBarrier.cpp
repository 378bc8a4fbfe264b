#include "zelvar/reader/WriteBarrier.h"

#include "zelvar/base/FileDescriptor.h"

#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace zelvar::reader {

namespace {

// Younger than the system's headers.
constexpr std::uint64_t kTruncate = 1ULL << 14U;       // from version 3
constexpr std::uint64_t kDeviceControl = 1ULL << 15U;  // from version 5
constexpr std::uint64_t kBindAndConnect = 3;           // from version 4
constexpr std::uint64_t kAbstractSockets = 1ULL << 0U; // from version 6
constexpr std::uint64_t kSignals = 1ULL << 1U;         // from version 6

/// The kernel's record with the parts that its versions have added; those of an older kernel must be left out.
struct Ruleset {
    std::uint64_t files = 0;
    std::uint64_t connections = 0;
    std::uint64_t scopes = 0;
};

constexpr std::uint64_t kFirstWrites =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
    LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR |
    LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
    LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;

constexpr std::uint64_t kReads = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;

Ruleset RulesOf(long version, Reach reach, bool barsReading) {
    Ruleset rules{.files = kFirstWrites | (barsReading ? kReads : 0)};
    if (version >= 2)
        rules.files |= LANDLOCK_ACCESS_FS_REFER;
    if (version >= 3)
        rules.files |= kTruncate;
    if (version >= 4 && reach != Reach::Network)
        rules.connections = kBindAndConnect;
    if (version >= 5)
        rules.files |= kDeviceControl;
    if (version >= 6)
        rules.scopes = reach != Reach::Network ? kSignals | kAbstractSockets : kSignals;
    return rules;
}

std::size_t SizeFor(long version) {
    if (version >= 6)
        return sizeof(Ruleset);
    return version >= 4 ? offsetof(Ruleset, scopes) : offsetof(Ruleset, connections);
}

/// What is not there is passed over: then there is one thing less that is allowed.
void Allow(int ruleset, char const *path, std::uint64_t access) {
    FileDescriptor const place(open(path, O_PATH | O_CLOEXEC));
    struct stat info {};
    if (!place.IsOpen() || fstat(place.Get(), &info) != 0)
        return;
    if (!S_ISDIR(info.st_mode))
        access &= ~static_cast<std::uint64_t>(LANDLOCK_ACCESS_FS_READ_DIR); // of a file that would be an error
    landlock_path_beneath_attr const rule{.allowed_access = access, .parent_fd = place.Get()};
    static_cast<void>(syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0));
}

} // namespace

bool RaiseWriteBarrier(Reach reach, std::vector<DString> const &readable) {
    long const version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1)
        return false;
    bool const barsReading = !readable.empty();
    Ruleset const rules = RulesOf(version, reach, barsReading);
    FileDescriptor const ruleset(static_cast<int>(syscall(SYS_landlock_create_ruleset, &rules, SizeFor(version), 0)));
    if (!ruleset.IsOpen())
        return false;
    Allow(ruleset.Get(), "/dev/null", LANDLOCK_ACCESS_FS_WRITE_FILE | (barsReading ? LANDLOCK_ACCESS_FS_READ_FILE : 0));
    for (DString const &place : readable)
        Allow(ruleset.Get(), place.c_str(), kReads);
    return syscall(SYS_landlock_restrict_self, ruleset.Get(), 0) == 0;
}

} // namespace zelvar::reader
