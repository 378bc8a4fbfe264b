#pragma once

#include "zelvar/base/FileState.h"
#include "zelvar/base/ImageList.h"
#include "zelvar/platform/os/ShellId.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <system_error>

namespace zelvar::platform {

/// Nanoseconds since 1970 UTC; a time that is not known is 0.
struct FileTimes {
    std::int64_t modified = 0;
    std::int64_t created = 0;
    std::int64_t accessed = 0;
    std::int64_t size = -1; ///< bytes
};

/// Tells folders apart that are reached by different names.
struct FolderIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool mayBeLink = false; ///< the source does not tell links from folders

    friend bool operator==(FolderIdentity const &a, FolderIdentity const &b) {
        return a.device == b.device && a.inode == b.inode;
    }
    friend bool operator<(FolderIdentity const &a, FolderIdentity const &b) {
        return a.device != b.device ? a.device < b.device : a.inode < b.inode;
    }
};

/// One child as an enumeration yields it.
struct ShellChild {
    ShellId id;
    DString name; ///< display name; for files and folders the name with its extension
    ShellKind kind = ShellKind::Unknown;
    bool link = false; ///< reached through a symbolic link
    FileState file;    ///< plain files only
};

/// Hears of news in the network place. It belongs to the thread that made it.
class NetworkListener {
public:
    virtual ~NetworkListener() = default;
    NetworkListener(NetworkListener const &) = delete;
    NetworkListener &operator=(NetworkListener const &) = delete;
    /// Sleeps until something has changed there since it began to listen or was last asked; false if it was stopped.
    virtual bool Wait(std::stop_token const &stop) = 0;

protected:
    NetworkListener() = default;
};

enum class ShellFolderOf { Desktop, Documents, CommonDocuments, Pictures };

/// Shell namespace: places of the machine and the network as one tree that browsing walks.
///
/// The desktop is the root; below it lie the drives place and the network place. Reading may block as long as the
/// medium does; nothing here touches a place that was not asked for. Any thread.
///
/// What is neither a plain file nor a folder (devices, FIFOs, sockets, links that lead nowhere or in a circle) is no
/// thing of the namespace: it is not listed, has no identifier and is never opened.
class ZELVAR_API ShellNamespace {
public:
    /// Yields false to stop.
    using Visitor = std::function<bool(ShellChild &&)>;
    /// What a caller makes of a plain file by its name: `No` leaves it out, and its size and time are not read.
    enum class Wish { Yes, No, Stop };
    using FileTest = std::function<Wish(std::string_view name)>;
    enum class Purpose {
        Browse,  ///< folders and files that are not hidden
        Network, ///< servers and shares only
    };

    virtual ~ShellNamespace() = default;

    [[nodiscard]] virtual ShellId Drives() const = 0;
    [[nodiscard]] virtual ShellId Network() const = 0;
    /// The identifier of a path or `smb://` address; null if nothing is there.
    [[nodiscard]] virtual ShellId Parse(DString const &path) const = 0;
    /// The identifier that a path or address of a folder would have, without a look at what is there; null if it is
    /// neither.
    [[nodiscard]] virtual ShellId ParseUnseen(DString const &path) const;
    /// Whether the server of an address says anything; true for all else. Takes a few seconds at most, and an answer
    /// holds for some.
    [[nodiscard]] virtual bool DoesServerAnswer(DString const &path) const;
    /// Null where nobody tells of news.
    [[nodiscard]] virtual std::unique_ptr<NetworkListener> ListenToNetwork() const;
    /// Visits the children in the source's order. Plain files that `wanted` leaves out are not visited; it can also end
    /// the whole. An error tells that children are missing, or that the folder cannot be read at all.
    // NOLINTNEXTLINE(modernize-use-nodiscard): to most callers a folder that cannot be read is an empty one
    virtual std::error_code Enumerate(ShellId const &folder, Purpose purpose, Visitor const &visit,
                                      FileTest const &wanted = nullptr) const = 0;
    /// What the thing is now; nothing if it is gone or cannot be told.
    [[nodiscard]] virtual std::optional<ShellKind> KindOf(ShellId const &id) const = 0;
    [[nodiscard]] virtual DString DisplayName(ShellId const &id) const = 0;
    /// The path in the file system, or the `smb://` address where there is none; empty for the virtual places.
    [[nodiscard]] virtual DString Path(ShellId const &id) const = 0;
    [[nodiscard]] virtual std::optional<FileTimes> Times(ShellId const &id) const = 0;
    /// Nothing where the source has no such thing.
    [[nodiscard]] virtual std::optional<FolderIdentity> IdentityOf(ShellId const &folder) const = 0;
    /// The picture, told by kind, the suffix of the name and `link` alone: the medium is not touched.
    [[nodiscard]] virtual ImageDescription Icon(ShellId const &id, bool link) const = 0;
    /// Path of a folder of the user, without separator at its end; nothing if the system names none.
    [[nodiscard]] virtual std::optional<DString> SpecialFolder(ShellFolderOf which) const = 0;

    /// The namespace of the process: the machine's own until a test sets another. The setter returns the former one;
    /// null sets the machine's own. Not while another thread uses the former one.
    static ShellNamespace &Current();
    static std::shared_ptr<ShellNamespace> SetCurrent(std::shared_ptr<ShellNamespace> shell);

protected:
    ShellNamespace() = default;
    ShellNamespace(ShellNamespace const &) = default;
    ShellNamespace &operator=(ShellNamespace const &) = default;
};

} // namespace zelvar::platform
