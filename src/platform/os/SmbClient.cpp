#include "zelvar/platform/os/SmbClient.h"

#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/LateLibrary.h"
#include "zelvar/base/Report.h"
#include "zelvar/base/TypedSecrets.h"
#include "zelvar/platform/os/TcpProbe.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <tuple>
#include <vector>

#include <fcntl.h>
#include <libsmbclient.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar::platform {

namespace {

/// The functions of libsmbclient that are used.
struct Library {
    decltype(&smbc_new_context) newContext = nullptr;
    decltype(&smbc_init_context) initContext = nullptr;
    decltype(&smbc_free_context) freeContext = nullptr;
    decltype(&smbc_setTimeout) setTimeout = nullptr;
    decltype(&smbc_setConfiguration) setConfiguration = nullptr;
    decltype(&smbc_setFunctionAuthData) setFunctionAuthData = nullptr;
    decltype(&smbc_getFunctionOpendir) openDir = nullptr;
    decltype(&smbc_getFunctionReaddir) readDir = nullptr;
    decltype(&smbc_getFunctionReaddirPlus) readDirPlus = nullptr;
    decltype(&smbc_getFunctionClosedir) closeDir = nullptr;
    decltype(&smbc_getFunctionStat) stat = nullptr;
    decltype(&smbc_getFunctionOpen) open = nullptr;
    decltype(&smbc_getFunctionRead) read = nullptr;
    decltype(&smbc_getFunctionLseek) seek = nullptr;
    decltype(&smbc_getFunctionClose) close = nullptr;

    /// False if the library or one of the functions is missing.
    bool Load() {
        LateLibrary const library("libsmbclient.so.0");
        auto const find = [&library](char const *name, auto &function) { return library.Find(name, function); };
        return find("smbc_new_context", newContext) && find("smbc_init_context", initContext) &&
               find("smbc_free_context", freeContext) && find("smbc_setTimeout", setTimeout) &&
               find("smbc_setConfiguration", setConfiguration) &&
               find("smbc_setFunctionAuthData", setFunctionAuthData) && find("smbc_getFunctionOpendir", openDir) &&
               find("smbc_getFunctionReaddir", readDir) && find("smbc_getFunctionReaddirPlus", readDirPlus) &&
               find("smbc_getFunctionClosedir", closeDir) && find("smbc_getFunctionStat", stat) &&
               find("smbc_getFunctionOpen", open) && find("smbc_getFunctionRead", read) &&
               find("smbc_getFunctionLseek", seek) && find("smbc_getFunctionClose", close);
    }
};

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kAnswerHolds{2};
constexpr std::chrono::seconds kSilenceHolds{10};

/// User and password of the address stand as they are; without them the login is anonymous. Nobody is asked.
void KeepCredentials(char const *, char const *, char *, int, char *, int, char *, int) {}

std::int64_t Nanoseconds(timespec const &time) {
    constexpr std::int64_t kLimit = 9'000'000'000;
    if (time.tv_sec <= 0 || time.tv_sec > kLimit)
        return 0;
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

bool IsHidden(std::string_view name, unsigned attributes) {
    return name.empty() || name.front() == '.' || (attributes & SMBC_DOS_MODE_HIDDEN) != 0;
}

} // namespace

struct SmbClient::Impl {
    std::mutex mutex; ///< guards all below and every call into the library
    Library library;
    bool tried = false;
    bool loaded = false;
    std::map<DString, SMBCCTX *> contexts; ///< by authority; they live as long as the process

    struct Server {
        std::mutex asking;      ///< held while the server is asked
        std::error_code error;  ///< why it does not answer; none if it does
        bool hasSpoken = false; ///< and does not merely take connections
        Clock::time_point until{};
    };
    std::mutex serversMutex;           ///< guards the map, and what stands in it but `asking`
    std::map<DString, Server> servers; ///< by authority

    /// What is known of the server for now.
    std::optional<std::error_code> KnownOf(DString const &authority) {
        std::lock_guard const lock(serversMutex);
        Server const &server = servers[authority];
        return Clock::now() < server.until ? std::optional(server.error) : std::nullopt;
    }

    bool HasSpoken(DString const &authority) {
        std::lock_guard const lock(serversMutex);
        Server const &server = servers[authority];
        return server.hasSpoken && Clock::now() < server.until;
    }

    void Learn(DString const &authority, std::error_code error, bool hasSpoken) {
        std::lock_guard const lock(serversMutex);
        Server &server = servers[authority];
        server.error = error;
        server.hasSpoken = hasSpoken;
        server.until = Clock::now() + (error ? kSilenceHolds : kAnswerHolds);
    }

    /// Why the server takes no connections. Who comes while it is being found out waits for that answer.
    std::error_code AskServer(DString const &authority) {
        if (std::optional<std::error_code> const known = KnownOf(authority))
            return *known;
        std::unique_lock lock(serversMutex);
        Server &server = servers[authority];
        lock.unlock();
        std::lock_guard const asking(server.asking);
        if (std::optional<std::error_code> const known = KnownOf(authority))
            return *known;
        std::error_code const error = TryToConnect(authority, kConnectMs);
        Learn(authority, error, false);
        return error;
    }

    /// Begins a call to a server: takes the lock. Null if the server does not answer, with `error`, or if there is no
    /// library.
    SMBCCTX *Begin(DString const &authority, std::unique_lock<std::mutex> &lock, std::error_code &error) {
        error = AskServer(authority);
        if (error)
            return nullptr;
        lock = std::unique_lock(mutex);
        error = KnownOf(authority).value_or(error); // who had the lock before may have found it silent
        SMBCCTX *const context = error ? nullptr : ContextFor(authority);
        if (context == nullptr && !error)
            error = std::make_error_code(std::errc::not_supported);
        return context;
    }

    /// What came of a call into the library, by `errno` if it failed; a server that let it wait is not asked soon
    /// again.
    std::error_code Conclude(DString const &authority, bool succeeded) {
        std::error_code const error(succeeded ? 0 : errno == 0 ? EIO : errno, std::generic_category());
        bool const isSilent = error == std::errc::timed_out;
        Learn(authority, isSilent ? error : std::error_code(), !isSilent);
        return error;
    }

    /// Null if there is no library or it gives no context.
    SMBCCTX *ContextFor(DString const &authority) {
        if (!tried) {
            tried = true;
            loaded = library.Load();
            Report::TraceMessage(Report::kTraceDriver, "libsmbclient was loaded? %s", loaded ? "YES" : "NO");
        }
        if (!loaded)
            return nullptr;
        SMBCCTX *&context = contexts[authority];
        if (context == nullptr)
            context = MakeContext();
        return context;
    }

    [[nodiscard]] SMBCCTX *MakeContext() const {
        SMBCCTX *const context = library.newContext();
        if (context == nullptr)
            return nullptr;
        library.setFunctionAuthData(context, &KeepCredentials);
        library.setTimeout(context, kAnswerMs);
        if (library.initContext(context) == nullptr) {
            library.freeContext(context, 0);
            return nullptr;
        }
        ForbidBroadcasts(context);
        return context;
    }

    /// Lays settings of ours over the machine's: no NetBIOS names, so no broadcast looks for them.
    void ForbidBroadcasts(SMBCCTX *context) const {
        constexpr std::string_view kSettings = "[global]\nname resolve order = host\ndisable netbios = yes\n";
        FileDescriptor const file(memfd_create("zelvar-smb", MFD_CLOEXEC));
        if (file.IsOpen() &&
            write(file.Get(), kSettings.data(), kSettings.size()) == static_cast<ssize_t>(kSettings.size()))
            library.setConfiguration(context, ("/proc/self/fd/" + std::to_string(file.Get())).c_str());
    }

    /// Reads up to `limit` shares; false at the end.
    bool ReadShares(SMBCCTX *context, SMBCFILE *folder, std::size_t limit, std::vector<SmbEntry> &out) const {
        while (out.size() < limit) {
            smbc_dirent const *const entry = library.readDir(context)(context, folder);
            if (entry == nullptr)
                return false;
            DString name(entry->name);
            if (entry->smbc_type == SMBC_FILE_SHARE && !name.empty() && name.back() != '$')
                out.push_back({.name = std::move(name), .kind = ShellKind::NetShare, .times = {}, .inode = 0});
        }
        return true;
    }

    bool ReadEntries(SMBCCTX *context, SMBCFILE *folder, std::size_t limit, std::vector<SmbEntry> &out) const {
        while (out.size() < limit) {
            libsmb_file_info const *const info = library.readDirPlus(context)(context, folder);
            if (info == nullptr)
                return false;
            if (info->name == nullptr || IsHidden(info->name, info->attrs))
                continue;
            SmbEntry entry{.name = info->name, .kind = ShellKind::Directory, .times = {}, .inode = 0};
            if ((info->attrs & SMBC_DOS_MODE_DIRECTORY) == 0) {
                entry.kind = ShellKind::File;
                entry.times = {.modified = Nanoseconds(info->mtime_ts),
                               .created = Nanoseconds(info->btime_ts),
                               .accessed = Nanoseconds(info->atime_ts),
                               .size = static_cast<std::int64_t>(info->size)};
            }
            out.push_back(std::move(entry));
        }
        return true;
    }
};

SmbClient::SmbClient() : m_impl(std::make_unique<Impl>()) {}
SmbClient::~SmbClient() = default;

SmbClient &SmbClient::Instance() {
    static SmbClient &client = *new SmbClient; // a worker may still be inside a call when the process ends
    return client;
}

bool SmbClient::DoesAnswer(SmbAddress const &address) {
    if (m_impl->AskServer(address.authority))
        return false;
    if (m_impl->HasSpoken(address.authority))
        return true;
    if (address.parts.empty())
        return List(address, [](SmbEntry &&) { return false; }) != std::errc::timed_out;
    std::ignore = Stat(address); // whatever it says
    return !m_impl->AskServer(address.authority);
}

std::error_code SmbClient::List(SmbAddress const &address, std::function<bool(SmbEntry &&)> const &visit) {
    DString const url = WithSecrets(ToText(address));
    std::unique_lock<std::mutex> lock;
    std::error_code error;
    SMBCCTX *const context = m_impl->Begin(address.authority, lock, error);
    if (context == nullptr)
        return error;
    SMBCFILE *const folder = m_impl->library.openDir(context)(context, url.c_str());
    if (std::error_code const failure = m_impl->Conclude(address.authority, folder != nullptr))
        return failure;
    // Read in batches: the visitor runs without the lock, and a listing that is stopped early stops reading.
    constexpr std::size_t kBatch = 512;
    std::vector<SmbEntry> batch;
    for (bool more = true, wanted = true; more && wanted;) {
        batch.clear();
        more = address.parts.empty() ? m_impl->ReadShares(context, folder, kBatch, batch)
                                     : m_impl->ReadEntries(context, folder, kBatch, batch);
        lock.unlock();
        for (auto entry = batch.begin(); wanted && entry != batch.end(); ++entry)
            wanted = visit(std::move(*entry));
        lock.lock();
    }
    m_impl->library.closeDir(context)(context, folder);
    return {};
}

std::optional<SmbEntry> SmbClient::Stat(SmbAddress const &address) {
    if (address.parts.empty())
        return std::nullopt;
    std::unique_lock<std::mutex> lock;
    std::error_code error;
    SMBCCTX *const context = m_impl->Begin(address.authority, lock, error);
    if (context == nullptr)
        return std::nullopt;
    struct stat status {};
    DString const url = WithSecrets(ToText(address));
    if (m_impl->Conclude(address.authority, m_impl->library.stat(context)(context, url.c_str(), &status) == 0))
        return std::nullopt;
    SmbEntry entry{.name = address.parts.back(), .kind = ShellKind::Directory, .times = {}, .inode = status.st_ino};
    if (S_ISREG(status.st_mode)) {
        entry.kind = ShellKind::File;
        entry.times = {.modified = Nanoseconds(status.st_mtim),
                       .created = 0,
                       .accessed = Nanoseconds(status.st_atim),
                       .size = static_cast<std::int64_t>(status.st_size)};
    } else if (!S_ISDIR(status.st_mode)) {
        return std::nullopt;
    }
    return entry;
}

struct SmbFile {
    SMBCCTX *context = nullptr;
    SMBCFILE *file = nullptr;
    std::int64_t size = 0;
    std::int64_t position = 0; ///< of the handle
};

SmbFile *SmbClient::OpenFile(SmbAddress const &address) {
    std::optional<SmbEntry> const entry = Stat(address);
    if (!entry || entry->kind != ShellKind::File)
        return nullptr;
    std::lock_guard const lock(m_impl->mutex);
    SMBCCTX *const context = m_impl->ContextFor(address.authority);
    if (context == nullptr)
        return nullptr;
    SMBCFILE *const file = m_impl->library.open(context)(context, WithSecrets(ToText(address)).c_str(), O_RDONLY, 0);
    return file == nullptr ? nullptr : new SmbFile{context, file, entry->times.size};
}

std::int64_t SmbClient::ReadFile(SmbFile &file, std::int64_t offset, void *to, std::size_t size) {
    constexpr std::size_t kPiece = 1U << 20U; // others get the lock in between
    std::size_t done = 0;
    while (done < size) {
        std::lock_guard const lock(m_impl->mutex);
        std::int64_t const at = offset + static_cast<std::int64_t>(done);
        if (file.position != at && m_impl->library.seek(file.context)(file.context, file.file, at, SEEK_SET) != at)
            return -1;
        file.position = -1; // unknown should the read fail
        ssize_t const count = m_impl->library.read(file.context)(
            file.context, file.file, static_cast<char *>(to) + done, std::min(size - done, kPiece));
        if (count < 0)
            return -1;
        file.position = at + count;
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return static_cast<std::int64_t>(done);
}

void SmbClient::CloseFile(SmbFile *file) {
    if (file == nullptr)
        return;
    {
        std::lock_guard const lock(m_impl->mutex);
        m_impl->library.close(file->context)(file->context, file->file);
    }
    delete file;
}

std::int64_t SmbClient::SizeOf(SmbFile const &file) { return file.size; }

DString ToText(SmbAddress const &address) {
    DString text = "smb://" + address.authority;
    for (DString const &part : address.parts)
        text += "/" + EscapedSmbPart(part);
    return text;
}

} // namespace zelvar::platform
