#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/data/reader/ConnectionBroker.h"
#include "zelvar/data/reader/ReaderSettings.h"
#include "zelvar/data/wire/MessageChannel.h"
#include "zelvar/data/wire/ReaderStatus.h"
#include "zelvar/data/wire/SharedMemory.h"

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

#include <sys/types.h>
#include <unistd.h>

namespace zelvar {

/// A file of ours that no application names: beside this library, in "zelvar".
[[nodiscard]] DString InstalledFile(char const *name);

/// The id of the one connection whose readers connect by themselves, since the library that does it is not to be
/// served: file servers.
inline constexpr char kFileServers[] = "smb:";

/// One running reader, as its application holds it. The end of this object is the end of the process. The child of a
/// fork holds a copy that is none of its own: there it is of no use, and its end is nothing but that.
///
/// One thread at a time, but for `Number`, `Pid`, `Terminate` and `IsTerminated`.
class ReaderProcess {
public:
    /// What a file was like when a request for it began.
    struct Stamp {
        std::int64_t modified = 0; ///< nanoseconds
        std::int64_t size = -1;    ///< bytes; below 0 if there is no such file on disk
        friend bool operator==(Stamp const &, Stamp const &) = default;
    };

    /// Starts the program and does not wait for its first word. Null, with a line in the log, if it does not start.
    /// `terms` say which connection it serves; null for none. It may then reach what they name, through this process.
    /// With `lowPriority` it gives way to all others where processors are short.
    static std::shared_ptr<ReaderProcess> Start(ReaderSettings const &settings,
                                                std::shared_ptr<ConnectionTerms const> const &terms,
                                                bool lowPriority = false);
    ~ReaderProcess();
    ReaderProcess(ReaderProcess const &) = delete;
    ReaderProcess &operator=(ReaderProcess const &) = delete;

    [[nodiscard]] int Number() const { return m_number; } ///< counted from 1, for the log
    [[nodiscard]] pid_t Pid() const { return m_pid; }
    /// Whether this process has started it.
    [[nodiscard]] bool IsOwn() const { return m_owner == getpid(); }
    [[nodiscard]] wire::MessageChannel &Channel() { return m_channel; }
    /// Who connects for it; null for one that connects to nothing, or by itself.
    [[nodiscard]] ConnectionBroker *Broker() const { return m_broker.get(); }

    /// Shared memory of at least so many bytes; `*isNew` if the reader has not been told of it. Null if there is none.
    wire::SharedMemory *Pixels(std::size_t bytes, bool *isNew);
    /// What the reader noted of the file of that request before it began; nothing if it had not come so far.
    [[nodiscard]] std::optional<Stamp> StampOf(std::uint64_t request) const;
    /// How far it says that it has come with that request, in thousandths; below 0 if it says nothing.
    [[nodiscard]] int ProgressOf(std::uint64_t request) const;
    /// Bytes that it holds in memory.
    [[nodiscard]] std::uint64_t ResidentBytes() const;
    /// What its threads have had of the processors since they began, all together.
    struct ProcessorTimes {
        std::chrono::nanoseconds used{0};
        std::chrono::nanoseconds waited{0}; ///< in line for one; what a thread waits now is added when it gets its turn
        bool isRunnable = false;            ///< a thread is on a processor, or in line for one
    };
    [[nodiscard]] ProcessorTimes ProcessorTimesNow() const;

    /// Ends it, and all that it may have started. True if it is gone within the time; a reader that the kernel holds is
    /// not. May be asked again.
    bool Kill(std::chrono::milliseconds wait);
    /// Whether a process that was told to end is held in the kernel, as on a file system that does not answer.
    [[nodiscard]] bool IsBlocked() const;
    /// Tells it to end, without a look at what comes of it. Any thread.
    void Terminate();
    /// Whether it was told so: then its end is no driver's fault.
    [[nodiscard]] bool IsTerminated() const { return m_isTerminated; }
    /// How it ended, in words for the log; empty while it has not.
    [[nodiscard]] DString const &Ending() const { return m_ending; }
    /// Whether it has ended; waits so long.
    bool HasEnded(std::chrono::milliseconds wait);

    /// Whether it has ever begun with a request: one that never did may never do.
    [[nodiscard]] bool HasBegun() const { return hasAnswered || Status().number.load(std::memory_order_acquire) != 0; }

    bool hasAnswered = false;
    std::uint64_t owed = 0; ///< number of a request that was given up while the reader was starting; 0 for none
    wire::MessageChannel::Clock::time_point const started = wire::MessageChannel::Clock::now();

private:
    ReaderProcess(int number, pid_t pid, int socket, std::unique_ptr<wire::SharedMemory> status,
                  std::unique_ptr<ConnectionBroker> broker);
    [[nodiscard]] wire::ReaderStatus const &Status() const {
        return *static_cast<wire::ReaderStatus const *>(m_status->Data());
    }

    int m_number;
    pid_t m_pid;              ///< also its process group
    pid_t m_owner = getpid(); ///< the process that started it
    FileDescriptor m_pidFile;
    wire::MessageChannel m_channel;
    std::unique_ptr<wire::SharedMemory> m_status;
    std::unique_ptr<wire::SharedMemory> m_pixels;
    std::unique_ptr<ConnectionBroker> m_broker;
    std::atomic<bool> m_isTerminated = false;
    bool m_reaped = false;
    DString m_ending;
};

} // namespace zelvar
