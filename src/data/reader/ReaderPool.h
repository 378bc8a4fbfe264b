#pragma once

#include "zelvar/data/reader/DriverModule.h"
#include "zelvar/data/reader/ReaderProcess.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zelvar {

/// What a reader is kept for. A preview never waits for a listing: they have readers of their own. One that serves a
/// connection does nothing else.
struct ReaderRole {
    bool listing = false;
    DString connection{};    ///< the id of its terms; empty for a reader of files on disk
    bool background = false; ///< of low priority, for what nobody waits for, of either kind
    friend bool operator==(ReaderRole const &, ReaderRole const &) = default;
};

/// The readers of this process, each lent to one thread at a time. Any thread.
class ReaderPool {
public:
    using Clock = wire::MessageChannel::Clock;

    /// A reader on loan. It goes back at the end of the loan's life.
    class Loan {
    public:
        Loan() = default;
        Loan(ReaderPool *pool, std::shared_ptr<ReaderProcess> process) : m_pool(pool), m_process(std::move(process)) {}
        Loan(Loan &&other) noexcept : m_pool(other.m_pool), m_process(std::move(other.m_process)) {}
        Loan &operator=(Loan &&other) noexcept {
            std::swap(m_pool, other.m_pool);
            m_process.swap(other.m_process);
            return *this;
        }
        Loan(Loan const &) = delete;
        Loan &operator=(Loan const &) = delete;
        ~Loan() {
            if (m_process != nullptr)
                m_pool->GiveBack(m_process);
        }
        explicit operator bool() const { return m_process != nullptr; }
        ReaderProcess *operator->() const { return m_process.get(); }
        ReaderProcess &operator*() const { return *m_process; }
        [[nodiscard]] std::shared_ptr<ReaderProcess> const &Process() const { return m_process; }

    private:
        ReaderPool *m_pool = nullptr;
        std::shared_ptr<ReaderProcess> m_process;
    };

    void Configure(ReaderSettings const &settings);
    [[nodiscard]] RequestBudget BudgetOf(RequestKind kind) const;
    /// Of a probe inside a listing that has wasted so much already.
    [[nodiscard]] std::chrono::milliseconds TimeInListing(std::chrono::milliseconds wasted) const;
    /// What one listing may spend on files that only a look into them can tell; on files of a server.
    [[nodiscard]] std::chrono::milliseconds TimeForLooks() const;
    [[nodiscard]] std::chrono::milliseconds TimeForServerFiles() const;

    using TermsPtr = std::shared_ptr<ConnectionTerms const>;
    /// Whom a request is for.
    struct Wanted {
        bool listing = false;
        TermsPtr terms{};  ///< of its connection; null for files on disk
        int preferred = 0; ///< number of a reader; 0 for any
        bool background = false;
        [[nodiscard]] ReaderRole Role() const {
            return {listing && !background, terms == nullptr ? DString() : terms->id, background};
        }
    };
    /// A reader for it: the preferred one if it is free, else another free one, else a new one, for which the one of
    /// another connection that has been idle longest gives way where there are too many, else the first that gets free.
    /// Nothing if `isStopped` says so meanwhile, after the deadline, or if none can be started.
    [[nodiscard]] Loan Borrow(Wanted const &wanted, Clock::time_point deadline, std::function<bool()> const &isStopped);
    /// Says something to the reader of that number, if there is one, that it does not answer: at once, or when whoever
    /// has it gives it back.
    void Tell(int number, wire::MessageChannel::Bytes message);
    /// Starts a reader for files on disk unless there is one.
    void Warm(bool listing);
    /// Takes a reader that was told to end out of use, and starts another in its place. `heldAt` is where the kernel
    /// may hold it; empty if it is gone.
    void Retire(Loan const &loan, bool crashed, DString const &heldAt);
    /// Whether any reader was told to end and is not gone.
    [[nodiscard]] bool HasHeld() const;
    /// Whether a reader that was ended at that place is still held there by the kernel.
    [[nodiscard]] bool IsBlocked(DString const &place);
    [[nodiscard]] ReaderCounts Counts();
    /// Ends the readers of a connection, those that are lent as well, whose requests fail; the next one starts anew.
    void EndOf(DString const &connection);
    /// Ends all readers and counts anew.
    void EndAll();
    /// Around a fork: holds the pool still, so that the child finds it whole.
    void BeforeFork() { m_mutex.lock(); }
    /// In the child the readers are the parent's: it forgets them, and starts its own when it needs any.
    void AfterFork(bool inChild);

private:
    struct Place {
        std::shared_ptr<ReaderProcess> process;
        ReaderRole role;
        TermsPtr terms;
        Clock::time_point idleSince = Clock::now();
        bool lent = false;
        std::vector<wire::MessageChannel::Bytes> unsent{};
    };
    struct Held {
        std::shared_ptr<ReaderProcess> process;
        DString place;
    };
    void GiveBack(std::shared_ptr<ReaderProcess> const &process);
    Place *FindFree(ReaderRole const &role, int preferred);
    [[nodiscard]] int Count(ReaderRole const &role) const;
    [[nodiscard]] int Most(ReaderRole const &role) const;
    /// Makes room for one more reader of that role; false while all that there may be are lent.
    bool MakeRoom(ReaderRole const &role);
    bool StartOne(ReaderRole const &role, TermsPtr const &terms);
    /// Ends free readers of connections that have been idle too long, or whose connection is `wanted` under other
    /// terms.
    void EndUseless(TermsPtr const &wanted);
    /// Ends a free reader; the place after it.
    std::vector<Place>::iterator End(std::vector<Place>::iterator at);
    void Hold(std::shared_ptr<ReaderProcess> const &process, DString const &place);
    void ForgetEnded();
    void ForgetThoseOfParent();

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    ReaderSettings m_settings;
    std::vector<Place> m_places;
    std::vector<Held> m_held; ///< ended, and not gone
    ReaderCounts m_counts;
    pid_t m_process = getpid(); ///< whose readers they are
    int m_failedStarts = 0;     ///< in a row
    Clock::time_point m_nextStart;
};

} // namespace zelvar
