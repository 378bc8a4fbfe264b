#include "zelvar/platform/os/MountTable.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/PathStyle.h"
#include "zelvar/base/ProcessMoments.h"
#include "zelvar/base/Translation.h"

#include <algorithm>
#include <array>
#include <climits>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace zelvar::platform {

namespace {

/// Shown wherever they are mounted.
constexpr std::array<std::string_view, 17> kNetworkTypes{
    "cifs",      "smb3",       "smbfs",       "nfs",         "nfs4",      "ncpfs",           "afs",
    "9p",        "fuse.sshfs", "fuse.davfs2", "fuse.rclone", "fuse.s3fs", "fuse.gvfsd-fuse", "ceph",
    "glusterfs", "lustre",     "gpfs"};
constexpr std::array<std::string_view, 2> kDiscTypes{"iso9660", "udf"};
constexpr std::array<std::string_view, 6> kFuseDiscTypes{"fuseblk",    "fuse.exfat", "fuse.ntfs",
                                                         "fuse.ntfs3", "zfs",        "btrfs"};
/// Show folders of this machine in another way.
constexpr std::array<std::string_view, 8> kLocalUnions{"fuse.mergerfs", "fuse.unionfs",   "fuse.mhddfs", "fuse.bindfs",
                                                       "fuse.encfs",    "fuse.gocryptfs", "fuse.cryfs",  "ecryptfs"};
/// Hold no files of users: the kernel's own, memory, layers of containers, and services of the system. Each between
/// blanks.
constexpr std::string_view kPseudoTypes =
    " proc sysfs devtmpfs devpts tmpfs ramfs rootfs cgroup cgroup2 pstore bpf tracefs debugfs securityfs configfs "
    "fusectl mqueue hugetlbfs binfmt_misc autofs rpc_pipefs nsfs efivarfs selinuxfs overlay aufs shiftfs nfsd resctrl "
    "functionfs usbfs fuse.portal fuse.lxcfs fuse.snapfuse fuse.squashfuse fuse.squashfuse_ll fuse.fuse-overlayfs ";
/// Folders of the system: a disc mounted there is not a place where users keep data.
constexpr std::array<std::string_view, 13> kSystemFolders{"/boot", "/dev",  "/efi", "/etc",  "/lib", "/nix", "/opt",
                                                          "/proc", "/root", "/run", "/snap", "/sys", "/usr"};

template <std::size_t n>
bool IsOneOf(std::string_view text, std::array<std::string_view, n> const &list) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

bool IsPseudo(std::string_view type) { return kPseudoTypes.find(" " + DString(type) + " ") != DString::npos; }

bool LiesBelow(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool IsSystemPlace(std::string_view mountPoint) {
    if (LiesBelow(mountPoint, "/run/media"))
        return false;
    return LiesBelow(mountPoint, "/var") || std::any_of(kSystemFolders.begin(), kSystemFolders.end(),
                                                        [&](auto folder) { return LiesBelow(mountPoint, folder); });
}

/// Below a folder whose name begins with a dot: nobody's to look into.
bool IsHiddenPlace(std::string_view mountPoint) { return mountPoint.find("/.") != std::string_view::npos; }

bool IsOctal(char c) { return c >= '0' && c <= '7'; }

/// "\040" stands for a blank, and so on.
DString Unescaped(std::string_view text) {
    DString plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && IsOctal(text[i + 1]) && IsOctal(text[i + 2]) &&
            IsOctal(text[i + 3])) {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

bool ReadsOne(DString const &file) {
    std::ifstream in(file);
    char digit = '0';
    return in.get(digit) && digit == '1';
}

/// The kernel marks a medium as removable on the disc, not on its partitions; a disc in an USB case is not marked, but
/// its place among the devices tells.
bool IsRemovable(DString const &sysRoot, DString const &device) {
    DString const entry = sysRoot + "/dev/block/" + device;
    if (ReadsOne(entry + "/removable") || ReadsOne(entry + "/../removable"))
        return true;
    std::array<char, PATH_MAX> target{};
    ssize_t const length = readlink(entry.c_str(), target.data(), target.size());
    return length > 0 &&
           std::string_view(target.data(), static_cast<std::size_t>(length)).find("/usb") != std::string_view::npos;
}

bool IsBlockDevice(MountEntry const &mount) {
    return mount.source.starts_with("/dev/") || IsOneOf(mount.type, kFuseDiscTypes);
}

/// All of a file system, or a part of a pool that stands for itself; not a folder that is shown in a second place.
bool IsWhole(MountEntry const &mount) { return mount.root == "/" || mount.root == mount.subvolume; }

std::optional<ShellKind> KindOf(MountEntry const &mount, DString const &sysRoot) {
    if (mount.mountPoint == "/")
        return ShellKind::Fixed;
    if (IsOneOf(mount.type, kNetworkTypes))
        return ShellKind::NetDrive;
    if (IsPseudo(mount.type))
        return std::nullopt;
    bool const isDisc = IsBlockDevice(mount);
    if (isDisc && !IsWhole(mount))
        return std::nullopt;
    if (IsOneOf(mount.type, kDiscTypes) || mount.source.starts_with("/dev/sr"))
        return ShellKind::CdRom;
    if (IsSystemPlace(mount.mountPoint) || ((!isDisc || mount.root != "/") && IsHiddenPlace(mount.mountPoint)))
        return std::nullopt;
    if (IsOneOf(mount.type, kLocalUnions))
        return ShellKind::Fixed;
    if (!isDisc)
        return ShellKind::NetDrive; // of a host, a cluster, or a server behind a program
    return IsRemovable(sysRoot, mount.device) ? ShellKind::Removable : ShellKind::Fixed;
}

/// "share on server" for "//server/share" and "server:/export"; else the last element of the mount point.
DString LabelOf(MountEntry const &mount, ShellKind kind) {
    if (mount.mountPoint == "/")
        return Translated("File System");
    if (kind == ShellKind::NetDrive) {
        std::string_view source = mount.source;
        std::string_view server;
        std::string_view share;
        if (std::size_t const scheme = source.find("://"); scheme != std::string_view::npos)
            source.remove_prefix(scheme + 1); // "https://server/share"
        if (source.starts_with("//")) {
            source.remove_prefix(2);
            std::size_t const slash = source.find('/');
            server = source.substr(0, slash);
            share = slash == std::string_view::npos ? std::string_view() : source.substr(slash + 1);
        } else if (std::size_t const colon = source.find(":/"); colon != std::string_view::npos) {
            server = source.substr(0, colon);
            share = source.substr(colon + 2);
        }
        if (!server.empty() && !share.empty())
            return Format(Translated("%s on %s"), DString(share).c_str(), DString(server).c_str());
    }
    return DString(FileNameOf(mount.mountPoint));
}

using Mounts = std::vector<MountEntry>;

Mounts ReadMounts(DString const &path) {
    Mounts mounts;
    std::ifstream table(path);
    for (DString line; std::getline(table, line);)
        if (std::optional<MountEntry> mount = ParseMountLine(line))
            mounts.push_back(*std::move(mount));
    return mounts;
}

/// The kernel's table of this process, read again when the kernel says that it is another.
class KernelTable final : ProcessMoments {
public:
    [[nodiscard]] std::shared_ptr<Mounts const> Read() {
        std::lock_guard const lock(m_mutex);
        if (!m_file)
            m_file.emplace(open(kPath, O_RDONLY | O_CLOEXEC));
        pollfd asked{.fd = m_file->Get(), .events = POLLPRI, .revents = 0};
        bool const isAsBefore = m_file->IsOpen() && poll(&asked, 1, 0) == 0;
        if (m_mounts == nullptr || !isAsBefore)
            m_mounts = std::make_shared<Mounts const>(ReadMounts(kPath));
        return m_mounts;
    }
    static KernelTable &Instance() {
        static auto &table = *new KernelTable;
        return table;
    }

private:
    static constexpr char kPath[] = "/proc/self/mountinfo";

    KernelTable() = default;

    void BeforeFork() override { m_mutex.lock(); }
    void AfterFork(Side side) override {
        // With the parent's open file a child would share what the kernel has told the parent already.
        if (side == Side::Child) {
            m_file.reset();
            m_mounts.reset();
        }
        m_mutex.unlock();
    }

    std::mutex m_mutex;
    std::optional<FileDescriptor> m_file; ///< opened before the table is read, so that no change is missed
    std::shared_ptr<Mounts const> m_mounts;
    Known m_known{*this, Locks::Inner};
};

} // namespace

std::optional<MountEntry> ParseMountLine(std::string_view line) {
    // "36 35 98:0 /root /mount/point options tag:1 - type source superoptions"
    std::istringstream in{DString(line)};
    DString skipped;
    DString device;
    DString root;
    DString mountPoint;
    if (!(in >> skipped >> skipped >> device >> root >> mountPoint))
        return std::nullopt;
    while (in >> skipped && skipped != "-") { // options, their number differs
    }
    DString type;
    if (skipped != "-" || !(in >> type))
        return std::nullopt;
    DString source;
    DString options;
    in >> source >> options; // may be missing
    constexpr std::string_view kSubvolume = "subvol=";
    DString subvolume;
    for (DString const &option : Split(options, ','))
        if (option.starts_with(kSubvolume))
            subvolume = option.substr(kSubvolume.size());
    return MountEntry{.device = device,
                      .root = Unescaped(root),
                      .mountPoint = Unescaped(mountPoint),
                      .type = type,
                      .source = Unescaped(source),
                      .subvolume = Unescaped(subvolume)};
}

std::optional<MountEntry> FindMount(std::string_view path) {
    std::shared_ptr<Mounts const> const mounts = KernelTable::Instance().Read();
    MountEntry const *deepest = nullptr;
    for (MountEntry const &entry : *mounts) {
        bool const isAbove = entry.mountPoint == "/" || LiesBelow(path, entry.mountPoint);
        // A later mount on the same point hides the former one.
        if (isAbove && (deepest == nullptr || entry.mountPoint.size() >= deepest->mountPoint.size()))
            deepest = &entry;
    }
    return deepest == nullptr ? std::nullopt : std::optional(*deepest);
}

bool MayBlock(MountEntry const &mount) {
    if (mount.mountPoint == "/" || IsOneOf(mount.type, kFuseDiscTypes))
        return false; // without the root nothing runs
    if (IsOneOf(mount.type, kNetworkTypes) || mount.type == "autofs")
        return true;
    return mount.type.starts_with("fuse") || (!IsPseudo(mount.type) && !IsBlockDevice(mount));
}

bool MayBlockAt(DString const &path) {
    auto const mount = FindMount(path);
    return !path.starts_with('/') || (mount && MayBlock(*mount));
}

MountPoints::MountPoints() {
    for (MountEntry const &mount : *KernelTable::Instance().Read())
        m_points.insert_or_assign(mount.mountPoint, MayBlock(mount)); // a later one hides the former
}

std::optional<bool> MountPoints::MayBlockAt(std::string_view path) const {
    auto const at = m_points.find(path);
    return at == m_points.end() ? std::nullopt : std::optional(at->second);
}

std::vector<Drive> ListDrives(DString const &procRoot, DString const &sysRoot) {
    Mounts mounts;
    for (MountEntry &mount : ReadMounts(procRoot + "/self/mountinfo")) {
        std::erase_if(mounts, [&](MountEntry const &former) { return former.mountPoint == mount.mountPoint; });
        mounts.push_back(std::move(mount));
    }

    std::vector<Drive> drives{{.mountPoint = "/", .label = Translated("File System"), .kind = ShellKind::Fixed}};
    for (MountEntry const &mount : mounts)
        if (std::optional<ShellKind> const kind = KindOf(mount, sysRoot); kind && mount.mountPoint != "/")
            drives.push_back({.mountPoint = mount.mountPoint, .label = LabelOf(mount, *kind), .kind = *kind});
    return drives;
}

} // namespace zelvar::platform
