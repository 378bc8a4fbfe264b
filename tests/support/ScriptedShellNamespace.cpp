#include "support/ScriptedShellNamespace.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/platform/os/IconRule.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <algorithm>
#include <functional>

namespace zelvar::test {

namespace {

constexpr char const *kDrivesKey = "drives";
constexpr char const *kNetworkKey = "network";

bool IsServerKey(DString const &key) {
    return platform::IsSmbAddress(key) && key.find('/', DString("smb://").size()) == DString::npos;
}

/// What a thing made on the way to another one is.
ShellKind KindOnTheWay(DString const &key) {
    if (key == "/")
        return ShellKind::Fixed;
    if (IsServerKey(key))
        return ShellKind::NetServer;
    return ShellKind::Directory;
}

} // namespace

ScriptedShellNamespace::ScriptedShellNamespace()
    : m_drives(ShellId::Desktop().Child(kDrivesKey, ShellKind::Virtual)),
      m_network(ShellId::Desktop().Child(kNetworkKey, ShellKind::Virtual)) {
    m_things[kDrivesKey] = Thing{.id = m_drives, .name = "Computer", .facts = {}, .children = {}};
    m_things[kNetworkKey] = Thing{.id = m_network, .name = "Network", .facts = {}, .children = {}};
}

DString ScriptedShellNamespace::KeyOf(ShellId const &id) {
    constexpr int kPlaceDepth = 1;
    if (id.Depth() <= kPlaceDepth)
        return DString(id.Element());
    std::vector<std::string_view> elements;
    ShellId at = id;
    for (; at.Depth() > kPlaceDepth; at = at.Parent())
        elements.push_back(at.Element());
    bool const onServer = at.Element() == kNetworkKey;
    DString key;
    for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
        if (onServer && element == elements.rbegin())
            key = "smb://" + DString(*element);
        else
            key = AppendPath(key, *element);
    }
    return key;
}

DString ScriptedShellNamespace::ParentKey(DString const &key) {
    if (key == "/")
        return kDrivesKey;
    return IsServerKey(key) ? DString(kNetworkKey) : DString(ParentPathOf(key));
}

void ScriptedShellNamespace::Insert(DString const &parentKey, DString const &key, DString const &name,
                                    ShellId const &id) {
    m_things[parentKey].children.push_back(key);
    m_things[key] = Thing{.id = id, .name = name, .facts = {}, .children = {}};
}

ScriptedShellNamespace::Thing &ScriptedShellNamespace::Ensure(DString const &key, ShellKind kind) {
    if (auto const found = m_things.find(key); found != m_things.end())
        return found->second;
    DString const parentKey = ParentKey(key);
    ShellId const parent = Ensure(parentKey, KindOnTheWay(parentKey)).id;
    DString const element = key == "/" ? key : DString(FileNameOf(key));
    Insert(parentKey, key, element, parent.Child(element, kind));
    return m_things[key];
}

void ScriptedShellNamespace::AddDrive(DString const &path, DString const &name, ShellKind kind) {
    std::lock_guard const lock(m_mutex);
    Insert(kDrivesKey, path, name, m_drives.Child(path, kind));
}

void ScriptedShellNamespace::AddServer(DString const &host, DString const &container) {
    std::lock_guard const lock(m_mutex);
    if (container.empty()) {
        std::ignore = Ensure("smb://" + host, ShellKind::NetServer);
        return;
    }
    DString const containerKey = "smb://" + container;
    ShellId const domain = Ensure(containerKey, ShellKind::NetDomain).id;
    Insert(containerKey, containerKey + "/" + host, host, domain.Child(host, ShellKind::NetServer));
}

void ScriptedShellNamespace::AddFolder(DString const &path) {
    std::lock_guard const lock(m_mutex);
    std::ignore = Ensure(path, KindOnTheWay(path));
}

void ScriptedShellNamespace::AddFile(DString const &path, FileFacts const &facts) {
    std::lock_guard const lock(m_mutex);
    Ensure(path, ShellKind::File).facts = facts;
}

void ScriptedShellNamespace::Remove(DString const &path) {
    std::lock_guard const lock(m_mutex);
    if (auto const parent = m_things.find(ParentKey(path)); parent != m_things.end())
        std::erase(parent->second.children, path);
    std::erase_if(m_things,
                  [&](auto const &thing) { return thing.first == path || thing.first.starts_with(path + "/"); });
}

void ScriptedShellNamespace::SetSpecialFolder(ShellFolderOf which, DString const &path) {
    std::lock_guard const lock(m_mutex);
    m_specialFolders[which] = path;
}

void ScriptedShellNamespace::SetUnreadable(DString const &path, bool unreadable) {
    std::lock_guard const lock(m_mutex);
    Ensure(path, KindOnTheWay(path)).unreadable = unreadable;
}

int ScriptedShellNamespace::EnumerateCalls(DString const &path) const {
    std::lock_guard const lock(m_mutex);
    Thing const *thing = Find(path);
    return thing == nullptr ? 0 : thing->enumerated;
}

int ScriptedShellNamespace::TimesCalls() const {
    std::lock_guard const lock(m_mutex);
    return m_timesCalls;
}

ScriptedShellNamespace::Thing const *ScriptedShellNamespace::Find(DString const &key) const {
    auto const found = m_things.find(key);
    return found == m_things.end() ? nullptr : &found->second;
}

ShellId ScriptedShellNamespace::Parse(DString const &path) const {
    std::lock_guard const lock(m_mutex);
    Thing const *thing = Find(path);
    return thing == nullptr ? ShellId() : thing->id;
}

std::optional<std::vector<ScriptedShellNamespace::Thing>> ScriptedShellNamespace::ChildrenOf(DString const &key) const {
    std::lock_guard const lock(m_mutex);
    auto const found = m_things.find(key);
    if (found == m_things.end())
        return std::nullopt;
    ++found->second.enumerated;
    if (found->second.unreadable || found->second.id.Kind() == ShellKind::File)
        return std::nullopt;
    std::vector<Thing> children;
    for (DString const &child : found->second.children)
        if (Thing const *thing = Find(child))
            children.push_back(*thing);
    return children;
}

std::error_code ScriptedShellNamespace::Enumerate(ShellId const &folder, Purpose purpose, Visitor const &visit,
                                                  FileTest const &wanted) const {
    std::optional<std::vector<Thing>> const children = ChildrenOf(KeyOf(folder));
    if (!children)
        return std::make_error_code(std::errc::permission_denied);
    for (Thing const &thing : *children) {
        bool const isFile = thing.id.Kind() == ShellKind::File;
        Wish const wish = isFile && wanted ? wanted(thing.name) : Wish::Yes;
        if (wish == Wish::Stop)
            break;
        if (wish == Wish::No || (isFile && purpose == Purpose::Network))
            continue;
        ShellChild child;
        child.id = thing.id;
        child.name = thing.name;
        child.kind = thing.id.Kind();
        child.link = thing.facts.link;
        if (isFile) {
            child.size = thing.facts.size;
            child.modified = thing.facts.modified;
        }
        if (!visit(std::move(child)))
            break;
    }
    return {};
}

std::optional<ShellKind> ScriptedShellNamespace::KindOf(ShellId const &id) const {
    std::lock_guard const lock(m_mutex);
    Thing const *thing = Find(KeyOf(id));
    return thing == nullptr ? std::nullopt : std::optional(thing->id.Kind());
}

DString ScriptedShellNamespace::DisplayName(ShellId const &id) const {
    std::lock_guard const lock(m_mutex);
    Thing const *thing = Find(KeyOf(id));
    return thing == nullptr ? DString() : thing->name;
}

DString ScriptedShellNamespace::Path(ShellId const &id) const {
    DString key = KeyOf(id);
    return key == kDrivesKey || key == kNetworkKey ? DString() : key;
}

std::optional<FileTimes> ScriptedShellNamespace::Times(ShellId const &id) const {
    std::lock_guard const lock(m_mutex);
    ++m_timesCalls;
    Thing const *thing = Find(KeyOf(id));
    if (thing == nullptr)
        return std::nullopt;
    FileTimes times;
    times.modified = times.created = times.accessed = thing->facts.modified;
    times.size = thing->id.Kind() == ShellKind::File ? thing->facts.size : -1;
    return times;
}

std::optional<FolderIdentity> ScriptedShellNamespace::IdentityOf(ShellId const &folder) const {
    return FolderIdentity{.device = 1, .inode = std::hash<DString>()(KeyOf(folder))};
}

ImageDescription ScriptedShellNamespace::Icon(ShellId const &id, bool link) const {
    return IconFor(id.Kind(), id.Element(), link, false, false);
}

std::optional<DString> ScriptedShellNamespace::SpecialFolder(ShellFolderOf which) const {
    std::lock_guard const lock(m_mutex);
    auto const found = m_specialFolders.find(which);
    return found == m_specialFolders.end() ? std::nullopt : std::optional(found->second);
}

} // namespace zelvar::test
