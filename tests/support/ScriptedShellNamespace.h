#pragma once

#include "zelvar/platform/os/ShellNamespace.h"

#include <map>
#include <mutex>
#include <set>
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

    ScriptedShellNamespace();

    /// A drive below the drives place; its tree begins at `path`.
    void AddDrive(DString const &path, DString const &name, ShellKind kind);
    /// A server below the network place as the network scan finds it, reached as "smb://<host>". `container` puts it
    /// below a domain of that name.
    void AddServer(DString const &host, DString const &container = {});
    void AddFolder(DString const &path);
    void AddFile(DString const &path, FileFacts const &facts);
    void AddFile(DString const &path) { AddFile(path, FileFacts{}); }
    /// Takes the thing with all below it away.
    void Remove(DString const &path);
    void SetSpecialFolder(ShellFolderOf which, DString const &path);

    /// `Enumerate` of the folder fails.
    void SetUnreadable(DString const &path, bool unreadable = true);

    /// How often a folder's children were asked for; the drives place is "drives", the network place "network".
    [[nodiscard]] int EnumerateCalls(DString const &path) const;
    [[nodiscard]] int TimesCalls() const;

    [[nodiscard]] ShellId Drives() const override { return m_drives; }
    [[nodiscard]] ShellId Network() const override { return m_network; }
    [[nodiscard]] ShellId Parse(DString const &path) const override;
    // NOLINTNEXTLINE(modernize-use-nodiscard): as in the base
    std::error_code Enumerate(ShellId const &folder, Purpose purpose, Visitor const &visit,
                              FileTest const &wanted = nullptr) const override;
    [[nodiscard]] std::optional<ShellKind> KindOf(ShellId const &id) const override;
    [[nodiscard]] DString DisplayName(ShellId const &id) const override;
    [[nodiscard]] DString Path(ShellId const &id) const override;
    [[nodiscard]] std::optional<FileTimes> Times(ShellId const &id) const override;
    [[nodiscard]] std::optional<FolderIdentity> IdentityOf(ShellId const &folder) const override;
    [[nodiscard]] ImageDescription Icon(ShellId const &id, bool link) const override;
    [[nodiscard]] std::optional<DString> SpecialFolder(ShellFolderOf which) const override;

private:
    struct Thing {
        ShellId id;
        DString name;
        FileFacts facts;
        bool unreadable = false;
        int enumerated = 0;
        std::vector<DString> children; ///< keys in `m_things`
    };

    [[nodiscard]] static DString KeyOf(ShellId const &id);
    [[nodiscard]] static DString ParentKey(DString const &key);
    Thing &Ensure(DString const &key, ShellKind kind);
    void Insert(DString const &parentKey, DString const &key, DString const &name, ShellId const &id);
    [[nodiscard]] Thing const *Find(DString const &key) const;
    std::optional<std::vector<Thing>> ChildrenOf(DString const &key) const;

    mutable std::mutex m_mutex; ///< guards all below
    ShellId m_drives;
    ShellId m_network;
    mutable std::map<DString, Thing> m_things;
    std::map<ShellFolderOf, DString> m_specialFolders;
    mutable int m_timesCalls = 0;
};

} // namespace zelvar::test
