#pragma once

#include "zelvar/base/Export.h"
#include "zelvar/platform/os/ShellNamespace.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <functional>

namespace zelvar::platform {

/// What a server tells about one entry of a listing.
struct SmbEntry {
    DString name;
    ShellKind kind = ShellKind::Unknown;
    FileTimes times;         ///< only below shares
    std::uint64_t inode = 0; ///< the server's number of it, where one was asked about by itself; 0 if it gives none
};

/// A file open on a server: a handle of `SmbClient`.
struct SmbFile;

/// Talks to file servers through libsmbclient, which is loaded at the first need.
///
/// The library is not made for threads, so one lock guards every call; a server that does not take a connection within
/// `kConnectMs` is given up before the lock is asked for, so a dead one keeps nobody waiting, and only the first who
/// asks waits for it. One that takes connections and then says nothing counts as dead with the first call it lets down.
/// Connections are pooled by address, user and port. Names are resolved by the system's resolver alone: nothing is
/// broadcast.
class ZELVAR_API SmbClient {
public:
    static constexpr int kConnectMs = 3000;
    static constexpr int kAnswerMs = 5000;

    static SmbClient &Instance();

    /// Whether the server takes connections and says anything there. An answer holds for two seconds, and that there is
    /// none for ten.
    bool DoesAnswer(SmbAddress const &address);
    /// Visits the shares of a server, or the entries of a folder, hidden ones left out, until `visit` yields false.
    std::error_code List(SmbAddress const &address, std::function<bool(SmbEntry &&)> const &visit);
    /// What lies behind an address with a share in it; nothing if it is gone or the server does not answer.
    std::optional<SmbEntry> Stat(SmbAddress const &address);

    /// Opens a plain file for reading; null if it cannot be. `CloseFile` ends it.
    SmbFile *OpenFile(SmbAddress const &address);
    /// Reads from `offset` on. The number of bytes, fewer than asked for only at the end; below 0 if it fails.
    std::int64_t ReadFile(SmbFile &file, std::int64_t offset, void *to, std::size_t size);
    void CloseFile(SmbFile *file);
    /// Bytes when it was opened.
    [[nodiscard]] static std::int64_t SizeOf(SmbFile const &file);

    SmbClient(SmbClient const &) = delete;
    SmbClient &operator=(SmbClient const &) = delete;

private:
    SmbClient();
    ~SmbClient();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

/// The address as text, escaped.
[[nodiscard]] ZELVAR_API DString ToText(SmbAddress const &address);

} // namespace zelvar::platform
