#pragma once

#include "zelvar/base/DFile.h"
#include "zelvar/base/ProcessMoments.h"
#include "zelvar/store/ForkableMutex.h"
#include "zelvar/store/SettingsDatabase.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>
#include <tuple>

namespace zelvar {

/// A key without separators at the ends, none doubled.
[[nodiscard]] DString NormalKey(DString const &key);

/// The connection with its lock and the transactions that are open on it.
///
/// SQLite remembers per process which locks it holds on a file, but a child holds none of them. So the connection is
/// closed while the process forks, unless the forking thread is inside a transaction of its own: that stays the
/// parent's, and fails in the child. There the database goes on taking the file for locked, so the child only reads.
class SettingsSession : ProcessMoments {
public:
    using Value = SettingsStore::Value;
    using Access = SettingsDatabase::Access;
    using Outcome = SettingsDatabase::Outcome;
    using Clock = std::chrono::steady_clock;
    using milliseconds = std::chrono::milliseconds;

    static constexpr milliseconds kPatience{10'000}; ///< how long a change waits for other processes
    static constexpr milliseconds kReading{1'000};
    static constexpr milliseconds kStep{20}; ///< within the database, where other threads cannot get in between
    static constexpr milliseconds kPause{1};

    explicit SettingsSession(DString file) : database(DFile(std::move(file)).GetAbsolutePath()) {}
    ~SettingsSession() override { End(); }

    void BeforeFork() override;
    void AfterFork(Side side) override;
    void BeforeExit() override;
    void End();

    /// Runs `attempt` until it is not told that another process is busy, or for so long. Between attempts other threads
    /// have their turn. A damaged file is set aside, and the new one tried.
    template <class Attempt>
    Outcome Patiently(milliseconds patience, Attempt const &attempt) {
        auto const deadline = Clock::now() + patience;
        for (;;) {
            {
                std::lock_guard const lock(mutex);
                milliseconds const left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
                database.SetPatience(std::clamp(left, milliseconds(0), kStep));
                Outcome outcome = attempt();
                if (outcome == Outcome::Damaged && database.SetAside())
                    outcome = attempt();
                if (outcome != Outcome::Busy || Clock::now() >= deadline)
                    return outcome;
            }
            std::this_thread::sleep_for(kPause);
        }
    }

    /// Inside a transaction: what cannot be read or written is a reason not to keep it.
    template <class Operation>
    Outcome Inside(Operation const &operation) {
        Outcome const outcome = isLocked ? Outcome::Failed : operation();
        bool const isTrouble = outcome != Outcome::Done && outcome != Outcome::Nothing;
        if (isTrouble && trouble != Outcome::Damaged)
            trouble = outcome;
        return outcome;
    }

    template <class Operation>
    Outcome Look(Operation const &operation) {
        milliseconds patience = kReading;
        {
            std::lock_guard const lock(mutex);
            if (depth > 0)
                return Inside(operation);
            std::ignore = DoPostponedAtOnce();
            // A log in use locks no reader out. Where there is none, who was locked out once is not held up each time.
            if (isPostponing || Clock::now() < impatientUntil)
                patience = milliseconds(0);
        }
        return Patiently(patience, [&] {
            Outcome const opened = database.Open(Access::Read);
            Outcome const outcome = opened == Outcome::Done ? operation() : opened;
            if (outcome == Outcome::Busy)
                impatientUntil = Clock::now() + kReading + patience;
            return outcome;
        });
    }

    /// Runs `operation` as a transaction, or as a part of the one that is open.
    template <class Operation>
    Outcome Change(Operation const &operation) {
        {
            std::lock_guard const lock(mutex);
            if (depth > 0)
                return Inside(operation);
        }
        Outcome outcome = Outcome::Failed;
        Outcome const ended = Transact(kPatience, [&] {
            outcome = Inside(operation);
            return outcome == Outcome::Done;
        });
        return ended == Outcome::Nothing ? outcome : ended;
    }

    /// The new value, as a transaction; not inside of one.
    Outcome WriteAlone(milliseconds patience, DString const &key, DString const &name, Value const &value);

    /// Done, or Nothing if `body` did not want it, or why not.
    Outcome Transact(milliseconds patience, std::function<bool()> const &body);

    Outcome TryTransact(std::function<bool()> const &body);

    bool TransactNested(std::function<bool()> const &body);

    bool ReadTogether(std::function<void()> const &body);

    // --- what could not be done at once ---

    /// Takes a change down, so that reads see it. False if it is not wanted.
    bool Postpone(std::function<bool()> const &body);

    /// Done if none is left.
    Outcome DoPostponed();
    Outcome DoPostponedAtOnce();

    /// While a change is taken down: takes this part of it down.
    bool IsPostponed(DString const &key, DString const &name, std::optional<Value> const &value);

    /// The value as a postponed change will leave it; null if none says anything of it.
    [[nodiscard]] std::optional<Value> const *Seen(DString const &key, DString const &name) const;

    /// A transaction or a reading together, until its end.
    struct Depth {
        SettingsSession &session;
        explicit Depth(SettingsSession &owner) : session(owner) {
            ++session.depth;
            session.trouble = Outcome::Done;
        }
        Depth(Depth const &) = delete;
        Depth &operator=(Depth const &) = delete;
        ~Depth() {
            --session.depth;
            session.database.Rollback(); // unless it has been committed
        }
    };

    ForkableMutex mutex;
    SettingsDatabase database;
    int depth = 0;                   ///< transactions, one inside the other
    Outcome trouble = Outcome::Done; ///< of the innermost one: what could not be read or written
    bool isLocked = false;           ///< a child: its parent was in a transaction when it forked
    Clock::time_point impatientUntil{};
    std::vector<std::function<bool()>> postponed;
    std::map<std::pair<DString, DString>, std::optional<Value>> seen; ///< by key and name; nothing for a removed one
    bool isPostponing = false;                                        ///< writes go to `seen`
    bool isDoingPostponed = false;
    Known known{*this};
};

} // namespace zelvar
