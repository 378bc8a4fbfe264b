#include "zelvar/data/reader/ReaderProcess.h"

#include "zelvar/base/PathStyle.h"
#include "zelvar/base/Report.h"
#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/reader/OpenModule.h"
#include "zelvar/data/wire/ConnectionOrder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <tuple>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace zelvar {

namespace {

// The first of the descriptors that are handed to the reader; they follow each other.
constexpr int kFirstFile = 3;
constexpr int kNiceness = 10; // of a reader of low priority
constexpr std::size_t kPixelStep = std::size_t{4} << 20U;

/// What the child is started with: nothing of ours is open in it but the descriptors that it is handed, and it is the
/// first of a process group, so that all that may come from it can be ended together.
class SpawnPlan {
public:
    /// The files get the numbers from `kFirstFile` on.
    explicit SpawnPlan(std::vector<int> const &files) {
        posix_spawn_file_actions_init(&m_files);
        posix_spawnattr_init(&m_attributes);
        for (int const number : {STDIN_FILENO, STDOUT_FILENO})
            posix_spawn_file_actions_addopen(&m_files, number, "/dev/null", O_RDWR, 0);
        if (std::getenv("ZELVAR_READER_ERRORS") == nullptr) // libraries below drivers print as they like
            posix_spawn_file_actions_addopen(&m_files, STDERR_FILENO, "/dev/null", O_RDWR, 0);
        // Aside first, to numbers that are nobody's: one of them may have the number that another is to get.
        int const count = static_cast<int>(files.size());
        int const aside = std::max(*std::ranges::max_element(files), kFirstFile + count) + 1;
        for (int i = 0; i < count; ++i)
            posix_spawn_file_actions_adddup2(&m_files, files[static_cast<std::size_t>(i)], aside + i);
        for (int i = 0; i < count; ++i)
            posix_spawn_file_actions_adddup2(&m_files, aside + i, kFirstFile + i);
        posix_spawn_file_actions_addclosefrom_np(&m_files, kFirstFile + count);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all);
        posix_spawnattr_setpgroup(&m_attributes, 0);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&m_files);
        posix_spawnattr_destroy(&m_attributes);
    }
    SpawnPlan(SpawnPlan const &) = delete;
    SpawnPlan &operator=(SpawnPlan const &) = delete;

    /// 0 or the number of the error.
    int Run(std::vector<DString> &words, pid_t &pid) const {
        std::vector<char *> arguments;
        arguments.reserve(words.size() + 1);
        for (DString &word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        return posix_spawn(&pid, arguments.front(), &m_files, &m_attributes, arguments.data(), environ);
    }

private:
    posix_spawn_file_actions_t m_files{};
    posix_spawnattr_t m_attributes{};
};

DString InWords(siginfo_t const &info) {
    if (info.si_code == CLD_EXITED)
        return Format("ended with code %d", info.si_status);
    char const *const name = sigdescr_np(info.si_status);
    return Format("was ended by signal %d (%s)", info.si_status, name == nullptr ? "unknown" : name);
}

/// Shows the kernel's file of that name about each thread of a process.
template <class Visit>
void ForEachThread(pid_t process, char const *name, Visit const &visit) {
    std::error_code error;
    for (std::filesystem::directory_iterator task(Format("/proc/%d/task", static_cast<int>(process)), error), end;
         !error && task != end; task.increment(error)) {
        FileDescriptor const file(open((task->path() / name).c_str(), O_RDONLY | O_CLOEXEC));
        std::array<char, 256> text{};
        if (file.IsOpen() && read(file.Get(), text.data(), text.size() - 1) > 0)
            visit(text.data());
    }
}

bool HasThreadInState(pid_t process, char state) {
    bool has = false;
    ForEachThread(process, "stat", [&](char const *text) {
        char const *const name = std::strrchr(text, ')'); // "id (name) state ..."
        has = has || (name != nullptr && std::strlen(name) > 2 && name[2] == state);
    });
    return has;
}

int PollOnce(int file, std::chrono::milliseconds wait) {
    pollfd wanted{.fd = file, .events = POLLIN, .revents = 0};
    return poll(&wanted, 1, static_cast<int>(wait.count()));
}

} // namespace

DString InstalledFile(char const *name) {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&UseReaderDrivers), &info) == 0 || info.dli_fname == nullptr)
        return {};
    return AppendPath(AppendPath(ParentPathOf(info.dli_fname), "zelvar"), name);
}

namespace {

/// What a reader of a connection is handed beside the rest.
struct ConnectionFiles {
    FileDescriptor theirs{-1}; ///< the reader's end of the way to its broker
    FileDescriptor order{-1};
    std::unique_ptr<ConnectionBroker> broker;
};

std::vector<std::unique_ptr<wire::NamedTextT>> NamedTexts(std::map<DString, DString> const &texts) {
    std::vector<std::unique_ptr<wire::NamedTextT>> named;
    for (auto const &[name, value] : texts) {
        auto text = std::make_unique<wire::NamedTextT>();
        text->name = name;
        text->value = value;
        named.push_back(std::move(text));
    }
    return named;
}

int SealOrderOf(ConnectionTerms const &terms, std::chrono::milliseconds idle) {
    wire::ConnectionOrderT order;
    order.id = terms.id;
    order.kind = static_cast<std::uint32_t>(terms.kind);
    order.options = NamedTexts(terms.options);
    order.secrets = NamedTexts(terms.secrets);
    order.idle = static_cast<std::uint32_t>(idle.count());
    int const file = wire::SealOrder(order);
    for (auto const &secret : order.secrets)
        explicit_bzero(secret->value.data(), secret->value.size());
    return file;
}

/// Null if the system has no more of what it takes.
std::unique_ptr<ConnectionFiles> MakeFiles(ReaderSettings const &settings,
                                           std::shared_ptr<ConnectionTerms const> const &terms) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return nullptr;
    auto files = std::make_unique<ConnectionFiles>();
    files->theirs = FileDescriptor(ends[1]);
    files->broker = ConnectionBroker::Serve(terms, ends[0]);
    files->order = FileDescriptor(SealOrderOf(*terms, settings.connectionIdle));
    return files->broker == nullptr || !files->order.IsOpen() ? nullptr : std::move(files);
}

} // namespace

std::shared_ptr<ReaderProcess> ReaderProcess::Start(ReaderSettings const &settings,
                                                    std::shared_ptr<ConnectionTerms const> const &terms,
                                                    bool lowPriority) {
    static std::atomic<int> count{0};
    DString const program = settings.program.empty() ? InstalledFile("zelvar-reader") : settings.program;
    bool const isServed = terms != nullptr && terms->id != kFileServers;
    auto status = wire::SharedMemory::Create(sizeof(wire::ReaderStatus));
    auto const connection = isServed ? MakeFiles(settings, terms) : nullptr;
    std::array<int, 2> ends{};
    if (status == nullptr || (isServed && connection == nullptr) ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        Report::TraceMessage(Report::kTraceOpen, "no reader: %s", std::strerror(errno));
        return nullptr;
    }
    new (status->Data()) wire::ReaderStatus{};
    FileDescriptor const theirs(ends[1]);
    std::vector<int> files{theirs.Get(), status->File()};
    if (isServed)
        files.insert(files.end(), {connection->theirs.Get(), connection->order.Get()});
    auto const number = [](std::size_t file) { return std::to_string(static_cast<std::size_t>(kFirstFile) + file); };
    std::vector<DString> words{program, number(0), number(1),
                               terms == nullptr ? "local"
                               : isServed       ? "connection"
                                                : "network"};
    for (std::size_t file = 2; file < files.size(); ++file)
        words.push_back(number(file));
    if (settings.withInstalledDrivers)
        words.push_back(InstalledFile(kGdalModule));
    words.insert(words.end(), settings.modules.begin(), settings.modules.end());
    pid_t pid = -1;
    if (int const error = SpawnPlan(files).Run(words, pid); error != 0) {
        close(ends[0]);
        Report::TraceMessage(Report::kTraceOpen, "no reader: \"%s\": %s", program.c_str(), std::strerror(error));
        return nullptr;
    }
    // It has one thread yet, and those that it makes take after that one. Where it is not allowed all stays as it is.
    if (lowPriority)
        std::ignore = setpriority(PRIO_PROCESS, static_cast<id_t>(pid), kNiceness);
    int const started = ++count;
    Report::TraceMessage(Report::kTraceDriver, "reader %d (process %d) starts%s%s", started, static_cast<int>(pid),
                         isServed ? " for " : "", isServed ? terms->id.c_str() : "");
    return std::shared_ptr<ReaderProcess>(new ReaderProcess(started, pid, ends[0], std::move(status),
                                                            isServed ? std::move(connection->broker) : nullptr));
}

ReaderProcess::ReaderProcess(int number, pid_t pid, int socket, std::unique_ptr<wire::SharedMemory> status,
                             std::unique_ptr<ConnectionBroker> broker)
    : m_number(number), m_pid(pid), m_pidFile(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))), m_channel(socket),
      m_status(std::move(status)), m_broker(std::move(broker)) {}

ReaderProcess::~ReaderProcess() {
    Kill(std::chrono::milliseconds(0));
    if (!IsOwn())
        static_cast<void>(m_broker.release()); // its thread is on the other side of the fork
}

wire::SharedMemory *ReaderProcess::Pixels(std::size_t bytes, bool *isNew) {
    *isNew = m_pixels == nullptr || m_pixels->Size() < bytes;
    if (*isNew) {
        m_pixels.reset();
        m_pixels = wire::SharedMemory::Create((bytes + kPixelStep - 1) / kPixelStep * kPixelStep);
    }
    return m_pixels.get();
}

std::optional<ReaderProcess::Stamp> ReaderProcess::StampOf(std::uint64_t request) const {
    if (Status().number.load(std::memory_order_acquire) != request)
        return std::nullopt;
    return Stamp{Status().modified.load(std::memory_order_relaxed), Status().size.load(std::memory_order_relaxed)};
}

int ReaderProcess::ProgressOf(std::uint64_t request) const {
    bool const isOfIt = Status().number.load(std::memory_order_acquire) == request;
    return isOfIt ? Status().progress.load(std::memory_order_relaxed) : -1;
}

std::uint64_t ReaderProcess::ResidentBytes() const {
    std::array<char, 64> path{};
    std::snprintf(path.data(), path.size(), "/proc/%d/statm", static_cast<int>(m_pid));
    FileDescriptor const file(open(path.data(), O_RDONLY | O_CLOEXEC));
    std::array<char, 128> text{};
    if (!file.IsOpen() || read(file.Get(), text.data(), text.size() - 1) <= 0)
        return 0;
    char *end = nullptr;
    std::strtoull(text.data(), &end, 10);
    return std::strtoull(end, nullptr, 10) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool ReaderProcess::HasEnded(std::chrono::milliseconds wait) {
    if (m_reaped || !IsOwn())
        return true;
    if (m_pidFile.IsOpen() && PollOnce(m_pidFile.Get(), wait) <= 0)
        return false;
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG) == 0) {
        if (info.si_pid == 0)
            return false;
        m_ending = InWords(info);
    } else {
        m_ending = "ended"; // an application that reaps all children by itself has been faster
    }
    m_reaped = true;
    return true;
}

bool ReaderProcess::Kill(std::chrono::milliseconds wait) {
    if (m_reaped || !IsOwn())
        return true;
    // Not reaped yet: neither the process nor its group can be somebody else's.
    kill(-m_pid, SIGKILL);
    kill(m_pid, SIGKILL);
    return HasEnded(wait);
}

void ReaderProcess::Terminate() {
    m_isTerminated = true;
    if (m_pidFile.IsOpen() && IsOwn())
        syscall(SYS_pidfd_send_signal, m_pidFile.Get(), SIGKILL, nullptr, 0);
}

bool ReaderProcess::IsBlocked() const { return HasThreadInState(m_pid, 'D'); }

ReaderProcess::ProcessorTimes ReaderProcess::ProcessorTimesNow() const {
    ProcessorTimes times;
    ForEachThread(m_pid, "schedstat", [&](char const *text) {
        char *end = nullptr; // the time on a processor, the time in line for one
        times.used += std::chrono::nanoseconds(std::strtoull(text, &end, 10));
        times.waited += std::chrono::nanoseconds(std::strtoull(end, nullptr, 10));
    });
    times.isRunnable = HasThreadInState(m_pid, 'R');
    return times;
}

} // namespace zelvar
