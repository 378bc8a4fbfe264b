#include "zelvar/platform/os/LinuxShellNamespace.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Translation.h"
#include "zelvar/platform/os/DesktopNetwork.h"
#include "zelvar/platform/os/FileStatus.h"
#include "zelvar/platform/os/IconRule.h"
#include "zelvar/platform/os/LocalFolder.h"
#include "zelvar/platform/os/MountTable.h"
#include "zelvar/platform/os/SmbClient.h"
#include "zelvar/platform/os/SpecialFolders.h"

#include <algorithm>
#include <vector>

#include <fcntl.h>

namespace zelvar::platform {

namespace {

std::optional<ShellKind> LocalKindOf(DString const &path) {
    std::optional<FileStatus> const status = ReadStatus(AT_FDCWD, path.c_str());
    return status ? std::optional(status->kind) : std::nullopt;
}

constexpr std::string_view kDrivesElement = "drives";
constexpr std::string_view kNetworkElement = "network";

/// Where a chain leads: a virtual place, a path, or a server and what lies on it.
enum class Realm { Virtual, Local, Server };

/// The elements of `id` below the drives or the network place, from the top; nothing for the virtual places.
struct Location {
    Realm realm = Realm::Virtual;
    std::vector<std::string_view> elements;
};

Location Locate(ShellId const &id) {
    Location location;
    constexpr int kPlaceDepth = 1; // of "drives" and "network" below the desktop
    if (id.Depth() <= kPlaceDepth)
        return location;
    location.elements.resize(static_cast<std::size_t>(id.Depth() - kPlaceDepth));
    ShellId at = id;
    for (std::size_t i = location.elements.size(); i-- > 0; at = at.Parent())
        location.elements[i] = at.Element(); // `id` keeps the whole chain alive
    location.realm = at.Element() == kNetworkElement ? Realm::Server : Realm::Local;
    return location;
}

DString LocalPath(std::vector<std::string_view> const &elements) {
    DString path(elements.front());
    for (std::size_t i = 1; i < elements.size(); ++i) {
        if (path.back() != '/')
            path += '/';
        path += elements[i];
    }
    return path;
}

SmbAddress AddressOf(std::vector<std::string_view> const &elements) {
    SmbAddress address{.authority = DString(elements.front()), .parts = {}};
    address.parts.assign(elements.begin() + 1, elements.end());
    return address;
}

/// The place of a drive is told by its path; it follows its label, as in "File System (/)".
DString NameOfDrive(DString const &label, DString const &path) { return label + " (" + path + ")"; }

bool IsOnServer(ShellKind kind) {
    return kind == ShellKind::NetServer || kind == ShellKind::NetShare || kind == ShellKind::NetDrive;
}

} // namespace

LinuxShellNamespace::LinuxShellNamespace(DString procRoot, DString sysRoot)
    : m_procRoot(std::move(procRoot)), m_sysRoot(std::move(sysRoot)),
      m_drives(ShellId::Desktop().Child(kDrivesElement, ShellKind::Virtual)),
      m_network(ShellId::Desktop().Child(kNetworkElement, ShellKind::Virtual)) {}

ShellId LinuxShellNamespace::Parse(DString const &path) const {
    if (path.empty() || path.find('\0') != DString::npos)
        return {};
    if (IsSmbAddress(path)) {
        std::optional<SmbAddress> const address = ParseSmbAddress(path);
        return address ? ParseSmb(*address) : ShellId();
    }
    return IsUrl(path) ? ShellId() : ParseLocal(DFile(path).GetAbsolutePath());
}

ShellId LinuxShellNamespace::ParseLocal(DString const &path) const {
    std::optional<ShellKind> const kind = path.empty() ? std::nullopt : LocalKindOf(path);
    return kind ? LocalChain(path, *kind) : ShellId();
}

ShellId LinuxShellNamespace::LocalChain(DString const &path, ShellKind lastKind) const {
    ShellId id = m_drives.Child("/", ShellKind::Fixed);
    std::vector<DString> const elements = Split(path, '/');
    auto const isEmpty = [](DString const &element) { return element.empty(); };
    auto const last = std::find_if_not(elements.rbegin(), elements.rend(), isEmpty);
    for (auto element = elements.begin(); element != last.base(); ++element)
        if (!element->empty())
            id = id.Child(*element, element + 1 == last.base() ? lastKind : ShellKind::Directory);
    return id;
}

ShellId LinuxShellNamespace::ParseSmb(SmbAddress const &address) const {
    constexpr std::size_t kShareOnly = 1;
    if (address.parts.size() <= kShareOnly)
        return ServerChain(address, ShellKind::Directory);
    std::optional<SmbEntry> const entry = SmbClient::Instance().Stat(address);
    return entry ? ServerChain(address, entry->kind) : ShellId();
}

ShellId LinuxShellNamespace::ServerChain(SmbAddress const &address, ShellKind last) const {
    ShellId id = m_network.Child(address.authority, ShellKind::NetServer);
    for (std::size_t i = 0; i < address.parts.size(); ++i)
        id = id.Child(address.parts[i], i == 0                          ? ShellKind::NetShare
                                        : i + 1 == address.parts.size() ? last
                                                                        : ShellKind::Directory);
    return id;
}

ShellId LinuxShellNamespace::ParseUnseen(DString const &path) const {
    if (std::optional<SmbAddress> const address = ParseSmbAddress(path))
        return ServerChain(*address, ShellKind::Directory);
    return path.starts_with('/') ? LocalChain(path, ShellKind::Directory) : ShellId();
}

bool LinuxShellNamespace::DoesServerAnswer(DString const &path) const {
    std::optional<SmbAddress> const address = ParseSmbAddress(path);
    return !address || SmbClient::Instance().DoesAnswer(*address);
}

std::unique_ptr<NetworkListener> LinuxShellNamespace::ListenToNetwork() const { return ListenToDesktopNetwork(); }

std::error_code LinuxShellNamespace::Enumerate(ShellId const &folder, Purpose purpose, Visitor const &visit,
                                               FileTest const &wanted) const {
    Location const location = Locate(folder);
    if (location.realm == Realm::Server)
        return EnumerateServer(folder, AddressOf(location.elements), purpose, visit, wanted);
    if (location.realm == Realm::Local)
        return purpose == Purpose::Browse ? EnumerateLocalFolder(LocalPath(location.elements), folder, visit, wanted)
                                          : std::make_error_code(std::errc::not_supported);
    if (folder.IsDesktop())
        EnumerateDesktop(visit);
    else if (folder == m_network)
        EnumerateNetwork(visit);
    else if (!(folder == m_drives))
        return std::make_error_code(std::errc::no_such_file_or_directory);
    else if (purpose == Purpose::Browse)
        EnumerateDrives(visit);
    return {};
}

void LinuxShellNamespace::EnumerateDesktop(Visitor const &visit) const {
    for (ShellId const &place : {m_drives, m_network}) {
        ShellChild child;
        child.id = place;
        child.name = DisplayName(place);
        child.kind = ShellKind::Virtual;
        if (!visit(std::move(child)))
            break;
    }
}

void LinuxShellNamespace::EnumerateDrives(Visitor const &visit) const {
    std::vector<Drive> drives = ListDrives(m_procRoot, m_sysRoot);
    if (DString const home = HomeFolder(); !home.empty() && home != "/") {
        std::erase_if(drives, [&](Drive const &drive) { return drive.mountPoint == home; });
        drives.insert(drives.begin() + 1,
                      {.mountPoint = home, .label = Translated("Home"), .kind = ShellKind::Directory});
    }
    for (Drive const &drive : drives) {
        ShellChild child;
        child.id = m_drives.Child(drive.mountPoint, drive.kind);
        child.name = NameOfDrive(drive.label, drive.mountPoint);
        child.kind = drive.kind;
        if (!visit(std::move(child)))
            break;
    }
}

void LinuxShellNamespace::EnumerateNetwork(Visitor const &visit) const {
    for (NetworkPlace const &place : ListDesktopNetwork()) {
        ShellChild child;
        child.id = m_network.Child(place.authority, ShellKind::NetServer);
        child.name = place.name;
        child.kind = ShellKind::NetServer;
        if (!visit(std::move(child)))
            break;
    }
}

std::error_code LinuxShellNamespace::EnumerateServer(ShellId const &folder, SmbAddress const &address, Purpose purpose,
                                                     Visitor const &visit, FileTest const &wanted) {
    if (purpose == Purpose::Network && !address.parts.empty())
        return std::make_error_code(std::errc::not_supported);
    return SmbClient::Instance().List(address, [&](SmbEntry &&entry) {
        if (entry.kind == ShellKind::File && wanted)
            if (Wish const wish = wanted(entry.name); wish != Wish::Yes)
                return wish == Wish::No;
        ShellChild child;
        child.id = folder.Child(entry.name, entry.kind);
        child.name = std::move(entry.name);
        child.kind = entry.kind;
        child.file.size = entry.times.size;
        child.file.modified = entry.times.modified;
        return visit(std::move(child));
    });
}

std::optional<ShellKind> LinuxShellNamespace::KindOf(ShellId const &id) const {
    if (id.IsNull())
        return std::nullopt;
    Location const location = Locate(id);
    constexpr std::size_t kPlaceItself = 1; // a drive or a server
    if (location.elements.size() <= kPlaceItself)
        return id.Kind();
    if (location.realm == Realm::Local)
        return LocalKindOf(LocalPath(location.elements));
    SmbAddress const address = AddressOf(location.elements);
    if (address.parts.size() == 1)
        return ShellKind::NetShare;
    std::optional<SmbEntry> const entry = SmbClient::Instance().Stat(address);
    return entry ? std::optional(entry->kind) : std::nullopt;
}

DString LinuxShellNamespace::DisplayName(ShellId const &id) const {
    if (id.IsNull())
        return {};
    if (id.IsDesktop())
        return Translated("Desktop");
    if (id == m_drives)
        return Translated("Computer");
    if (id == m_network)
        return Translated("Network");
    DString element(id.Element());
    if (id.Depth() != m_drives.Depth() + 1 || !(id.Parent() == m_drives))
        return element;
    if (id.Kind() == ShellKind::Directory)
        return NameOfDrive(Translated("Home"), element);
    for (Drive const &drive : ListDrives(m_procRoot, m_sysRoot))
        if (drive.mountPoint == element)
            return NameOfDrive(drive.label, element);
    return NameOfDrive(DString(FileNameOf(element)), element);
}

DString LinuxShellNamespace::Path(ShellId const &id) const {
    Location const location = Locate(id);
    switch (location.realm) {
    case Realm::Local:
        return LocalPath(location.elements);
    case Realm::Server:
        return ToText(AddressOf(location.elements));
    case Realm::Virtual:
        break;
    }
    return {};
}

std::optional<FileTimes> LinuxShellNamespace::Times(ShellId const &id) const {
    Location const location = Locate(id);
    if (location.realm == Realm::Local)
        return ReadTimes(LocalPath(location.elements).c_str());
    if (location.realm == Realm::Server)
        if (std::optional<SmbEntry> const entry = SmbClient::Instance().Stat(AddressOf(location.elements)))
            return entry->times;
    return std::nullopt;
}

std::optional<FolderIdentity> LinuxShellNamespace::IdentityOf(ShellId const &folder) const {
    Location const location = Locate(folder);
    if (location.realm == Realm::Server && location.elements.size() > 1) {
        SmbAddress const address = AddressOf(location.elements);
        std::optional<SmbEntry> const entry = SmbClient::Instance().Stat(address);
        if (!entry || entry->inode == 0)
            return std::nullopt;
        return FolderIdentity{.device = std::hash<DString>()(address.authority + "/" + address.parts.front()),
                              .inode = entry->inode,
                              .mayBeLink = true};
    }
    if (location.realm != Realm::Local)
        return std::nullopt;
    return ReadIdentity(LocalPath(location.elements).c_str());
}

ImageDescription LinuxShellNamespace::Icon(ShellId const &id, bool link) const {
    bool const home = id.Kind() == ShellKind::Directory && id.Depth() == m_drives.Depth() + 1;
    bool const network = IsOnServer(id.Kind()) || id == m_network;
    return IconFor(id.Kind(), id.Element(), link, home, network);
}

std::optional<DString> LinuxShellNamespace::SpecialFolder(ShellFolderOf which) const {
    return FindSpecialFolder(which);
}

} // namespace zelvar::platform
