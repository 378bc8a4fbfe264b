#pragma once

#include "zelvar/platform/os/ShellId.h"

#include <optional>
#include <vector>

namespace zelvar::platform {

/// A mounted medium as the user sees it.
struct Drive {
    DString mountPoint; ///< absolute path
    DString label;      ///< what the medium is called, without its path
    ShellKind kind = ShellKind::Fixed;
};

/// One line of the kernel's mount table.
struct MountEntry {
    DString device;      ///< "major:minor"
    DString root;        ///< the part of the file system that is mounted, "/" for all of it
    DString mountPoint;  ///< absolute path
    DString type;        ///< file system, as "ext4" or "fuse.sshfs"
    DString source;      ///< device file or remote address
    DString subvolume{}; ///< the part of a pool that is a whole by itself, as the file system names it; mostly empty

    friend bool operator==(MountEntry const &, MountEntry const &) = default;
};

/// Reads a line of "mountinfo"; nothing if it is not one. The octal escapes of the kernel are undone.
[[nodiscard]] std::optional<MountEntry> ParseMountLine(std::string_view line);

/// The deepest mount above a path; nothing if the kernel's table cannot be read.
[[nodiscard]] std::optional<MountEntry> FindMount(std::string_view path);

/// Whether who touches it may be held in the kernel: a file system of a network, or one that another process serves.
[[nodiscard]] bool MayBlock(MountEntry const &mount);
/// The same for where a path lies; true for what is none of this file system.
[[nodiscard]] ZELVAR_API bool MayBlockAt(DString const &path);

/// The drives that the kernel's tables name, the file system's root first. Reads the tables alone: a mount point is
/// never touched, since a dead one would block for minutes.
///
/// Shown are the root, removable media, CDs, network mounts, fixed discs mounted whole outside the system's own
/// folders, and whatever else is there that is neither the kernel's nor the system's: new file systems come up all the
/// time, and what they are not is known better. A later mount on the same point hides the former one.
[[nodiscard]] std::vector<Drive> ListDrives(DString const &procRoot, DString const &sysRoot);

} // namespace zelvar::platform
