#pragma once

#include "zelvar/platform/os/ShellNamespace.h"

namespace zelvar::platform {

struct SmbAddress;

/// The namespace of a Linux machine.
///
/// Below the drives place lie the file system's root, the user's home and the mounted media, told by the kernel's
/// tables alone; below the network place the file servers that the desktop knows. A path is a chain from the root drive
/// down, an `smb://` address one from the network place down.
class ZELVAR_API LinuxShellNamespace : public ShellNamespace {
public:
    /// Tests give a made-up tree in place of the kernel's.
    explicit LinuxShellNamespace(DString procRoot = "/proc", DString sysRoot = "/sys");

    [[nodiscard]] ShellId Drives() const override { return m_drives; }
    [[nodiscard]] ShellId Network() const override { return m_network; }
    /// A relative path begins at the working directory. A server or a share is taken at its word: it is not asked.
    [[nodiscard]] ShellId Parse(DString const &path) const override;
    [[nodiscard]] ShellId ParseUnseen(DString const &path) const override;
    [[nodiscard]] bool DoesServerAnswer(DString const &path) const override;
    [[nodiscard]] std::unique_ptr<NetworkListener> ListenToNetwork() const override;
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
    [[nodiscard]] ShellId ParseLocal(DString const &path) const;
    /// The chain of a path or address whose last element is of that kind.
    [[nodiscard]] ShellId LocalChain(DString const &path, ShellKind last) const;
    [[nodiscard]] ShellId ServerChain(SmbAddress const &address, ShellKind last) const;
    [[nodiscard]] ShellId ParseSmb(SmbAddress const &address) const;
    void EnumerateDesktop(Visitor const &visit) const;
    void EnumerateDrives(Visitor const &visit) const;
    void EnumerateNetwork(Visitor const &visit) const;
    [[nodiscard]] static std::error_code EnumerateServer(ShellId const &folder, SmbAddress const &address,
                                                         Purpose purpose, Visitor const &visit, FileTest const &wanted);

    DString m_procRoot;
    DString m_sysRoot;
    ShellId m_drives;
    ShellId m_network;
};

} // namespace zelvar::platform
