#pragma once

#include "zelvar/platform/os/IconRule.h"
#include "zelvar/platform/os/ShellNamespace.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace zelvar::test {

using platform::FileTimes;
using platform::FolderIdentity;
using platform::ShellChild;
using platform::ShellFolderOf;
using platform::ShellId;
using platform::ShellKind;

/// A namespace that a test writes down: trees, errors, and counts of what was asked.
///
/// Things are named by paths ("/data/a.tif") and addresses ("smb://host/share/a.tif"); folders on the way are made. The
/// order of children is that of their making. Any thread.
class ScriptedShellNamespace : public platform::ShellNamespace {
public:
    struct FileFacts {
        std::int64_t size = 0;
        std::int64_t modified = 1'000'000'000'000'000'000; ///< 2001-09-09 01:46:40 UTC
        bool link = false;
    };

    ScriptedShellNamespace() {
        m_things[kDrivesKey] = {.id = m_drives, .name = "Computer", .facts = {}, .children = {}};
        m_things[kNetworkKey] = {.id = m_network, .name = "Network", .facts = {}, .children = {}};
    }

    /// A drive below the drives place; its tree begins at `path`.
    void AddDrive(DString const &path, DString const &name, ShellKind kind) {
        std::lock_guard const lock(m_mutex);
        Insert(kDrivesKey, path, name, m_drives.Child(path, kind));
    }
    /// A server below the network place as the network scan finds it, reached as "smb://<host>". `container` puts it
    /// below a domain of that name.
    void AddServer(DString const &host, DString const &container = {});
    void AddFolder(DString const &path) { SetUnreadable(path, false); }
    void AddFile(DString const &path, FileFacts const &facts) {
        std::lock_guard const lock(m_mutex);
        Ensure(path, ShellKind::File).facts = facts;
    }
    void AddFile(DString const &path) { AddFile(path, FileFacts{}); }
    /// Takes the thing with all below it away.
    void Remove(DString const &path);
    void SetSpecialFolder(ShellFolderOf which, DString const &path) {
        std::lock_guard const lock(m_mutex);
        m_specialFolders[which] = path;
    }

    /// `Enumerate` of the folder fails.
    void SetUnreadable(DString const &path, bool unreadable = true) {
        std::lock_guard const lock(m_mutex);
        Ensure(path, KindOnTheWay(path)).unreadable = unreadable;
    }

    /// How often a folder's children were asked for; the drives place is "drives", the network place "network".
    [[nodiscard]] int EnumerateCalls(DString const &path) const { return Look(path).value_or(Thing()).enumerated; }
    [[nodiscard]] int TimesCalls() const { return m_timesCalls; }

    [[nodiscard]] ShellId Drives() const override { return m_drives; }
    [[nodiscard]] ShellId Network() const override { return m_network; }
    [[nodiscard]] ShellId Parse(DString const &path) const override { return Look(path).value_or(Thing()).id; }
    // NOLINTNEXTLINE(modernize-use-nodiscard): as in the base
    std::error_code Enumerate(ShellId const &folder, Purpose purpose, Visitor const &visit,
                              FileTest const &wanted = nullptr) const override;
    [[nodiscard]] std::optional<ShellKind> KindOf(ShellId const &id) const override {
        std::optional<Thing> const thing = Look(KeyOf(id));
        return thing ? std::optional(thing->id.Kind()) : std::nullopt;
    }
    [[nodiscard]] DString DisplayName(ShellId const &id) const override {
        return Look(KeyOf(id)).value_or(Thing()).name;
    }
    [[nodiscard]] DString Path(ShellId const &id) const override {
        return id == m_drives || id == m_network ? DString() : KeyOf(id);
    }
    [[nodiscard]] std::optional<FileTimes> Times(ShellId const &id) const override;
    [[nodiscard]] std::optional<FolderIdentity> IdentityOf(ShellId const &folder) const override {
        return FolderIdentity{.device = 1, .inode = std::hash<DString>()(KeyOf(folder))};
    }
    [[nodiscard]] ImageDescription Icon(ShellId const &id, bool link) const override {
        return platform::IconFor(id.Kind(), id.Element(), link, false, false);
    }
    [[nodiscard]] std::optional<DString> SpecialFolder(ShellFolderOf which) const override {
        std::lock_guard const lock(m_mutex);
        auto const found = m_specialFolders.find(which);
        return found == m_specialFolders.end() ? std::nullopt : std::optional(found->second);
    }

private:
    struct Thing {
        ShellId id;
        DString name;
        FileFacts facts;
        bool unreadable = false;
        int enumerated = 0;
        std::vector<DString> children; ///< keys in `m_things`
    };

    static constexpr char kDrivesKey[] = "drives";
    static constexpr char kNetworkKey[] = "network";

    [[nodiscard]] static DString KeyOf(ShellId const &id);
    [[nodiscard]] static DString ParentKey(DString const &key);
    [[nodiscard]] static ShellKind KindOnTheWay(DString const &key);
    Thing &Ensure(DString const &key, ShellKind kind);
    void Insert(DString const &parentKey, DString const &key, DString const &name, ShellId const &id);
    /// A copy of what stands there.
    [[nodiscard]] std::optional<Thing> Look(DString const &key) const {
        std::lock_guard const lock(m_mutex);
        auto const found = m_things.find(key);
        return found == m_things.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<std::vector<Thing>> ChildrenOf(DString const &key) const;

    mutable std::mutex m_mutex; ///< guards all below
    ShellId m_drives = ShellId::Desktop().Child(kDrivesKey, ShellKind::Virtual);
    ShellId m_network = ShellId::Desktop().Child(kNetworkKey, ShellKind::Virtual);
    mutable std::map<DString, Thing> m_things;
    std::map<ShellFolderOf, DString> m_specialFolders;
    mutable std::atomic<int> m_timesCalls = 0;
};

} // namespace zelvar::test
