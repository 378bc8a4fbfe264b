#include "support/ScriptedShellNamespace.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/platform/os/SmbAddress.h"

namespace zelvar::test {

static bool IsServerKey(DString const &key) {
    return platform::IsSmbAddress(key) && key.find('/', DString("smb://").size()) == DString::npos;
}

/// What a thing made on the way to another one is.
ShellKind ScriptedShellNamespace::KindOnTheWay(DString const &key) {
    return key == "/" ? ShellKind::Fixed : IsServerKey(key) ? ShellKind::NetServer : ShellKind::Directory;
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

void ScriptedShellNamespace::Remove(DString const &path) {
    std::lock_guard const lock(m_mutex);
    if (auto const parent = m_things.find(ParentKey(path)); parent != m_things.end())
        std::erase(parent->second.children, path);
    std::erase_if(m_things,
                  [&](auto const &thing) { return thing.first == path || thing.first.starts_with(path + "/"); });
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
        if (auto const thing = m_things.find(child); thing != m_things.end())
            children.push_back(thing->second);
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
            child.file.size = thing.facts.size;
            child.file.modified = thing.facts.modified;
        }
        if (!visit(std::move(child)))
            break;
    }
    return {};
}

std::optional<FileTimes> ScriptedShellNamespace::Times(ShellId const &id) const {
    ++m_timesCalls;
    std::optional<Thing> const thing = Look(KeyOf(id));
    if (!thing)
        return std::nullopt;
    FileTimes times;
    times.modified = times.created = times.accessed = thing->facts.modified;
    times.size = thing->id.Kind() == ShellKind::File ? thing->facts.size : -1;
    return times;
}

} // namespace zelvar::test
