#include "zelvar/store/SettingsStore.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/ProcessMoments.h"
#include "zelvar/base/Report.h"
#include "zelvar/store/SettingsDatabase.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <thread>
#include <tuple>
#include <utility>

namespace zelvar {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using Access = SettingsDatabase::Access;
using Outcome = SettingsDatabase::Outcome;

constexpr milliseconds kPatience{10'000}; // how long a change waits for other processes
constexpr milliseconds kSoon{80};         // the same where nobody may wait
constexpr milliseconds kReading{1'000};
constexpr milliseconds kAtEnd{2'000}; // for what was postponed, when the process ends
constexpr milliseconds kStep{20};     // of it within the database, where other threads cannot get in between
constexpr milliseconds kPause{1};

/// Without separators at the ends, none doubled.
DString NormalKey(DString const &key) {
    bool const isNormal = !key.starts_with('\\') && !key.ends_with('\\') && key.find("\\\\") == DString::npos;
    return isNormal ? key : JoinNotEmpty(Split(key, '\\'), '\\');
}

/// A lock that its thread may take again. Unlike the library's it may be released in the child of a fork: there the
/// thread that forked is another one for the system, but the same for itself.
class ForkableMutex {
public:
    void lock() {
        if (m_owner.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
            m_mutex.lock();
            m_owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ++m_count;
    }
    void unlock() {
        if (--m_count > 0)
            return;
        m_owner.store(std::thread::id(), std::memory_order_relaxed);
        m_mutex.unlock();
    }

private:
    std::mutex m_mutex;
    std::atomic<std::thread::id> m_owner{}; ///< only its own thread ever finds itself here
    int m_count = 0;                        ///< guarded by `m_mutex`
};

} // namespace

/// The connection with its lock and the transactions that are open on it.
///
/// SQLite remembers per process which locks it holds on a file, but a child holds none of them. So the connection is
/// closed while the process forks, unless the forking thread is inside a transaction of its own: that stays the
/// parent's, and fails in the child. There the database goes on taking the file for locked, so the child only reads.
struct SettingsStore::Impl final : ProcessMoments {
    explicit Impl(DString file) : database(DFile(std::move(file)).GetAbsolutePath()) {}
    ~Impl() override { End(); }

    void BeforeFork() override {
        mutex.lock();
        if (depth == 0)
            database.CloseQuickly();
    }
    void AfterFork(Side side) override {
        if (side == Side::Child) {
            if (!isDoingPostponed) {
                postponed.clear(); // the parent does it
                seen.clear();
            }
            if (depth > 0) {
                isLocked = true;
                database.Abandon();
            }
        }
        mutex.unlock();
    }
    void BeforeExit() override {
        std::lock_guard const lock(mutex);
        if (depth > 0)
            return;
        End();
        database.Close();
    }
    void End() {
        if (Patiently(kAtEnd, [&] { return DoPostponed(); }) == Outcome::Busy)
            std::fputs("zelvar: settings are not kept: another process has locked them\n", stderr);
    }

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

    /// Done, or Nothing if `body` did not want it, or why not.
    Outcome Transact(milliseconds patience, std::function<bool()> const &body) {
        return Patiently(patience, [&] {
            Outcome const before = DoPostponed(); // which is older
            return before == Outcome::Done ? TryTransact(body) : before;
        });
    }

    Outcome TryTransact(std::function<bool()> const &body) {
        Outcome outcome = isLocked ? Outcome::Failed : database.Open(Access::Write);
        if (outcome == Outcome::Done)
            outcome = database.Begin();
        if (outcome != Outcome::Done)
            return outcome;
        Depth const inside(*this);
        bool const wanted = body();
        if (isLocked)
            return Outcome::Failed;
        if (trouble != Outcome::Done)
            return trouble;
        return wanted ? database.Commit() : Outcome::Nothing;
    }

    bool TransactNested(std::function<bool()> const &body) {
        if (isLocked || database.BeginNested() != Outcome::Done)
            return false;
        Outcome const outside = std::exchange(trouble, Outcome::Done);
        ++depth;
        auto const end = [&](bool keep) {
            --depth;
            bool const isDamaged = trouble == Outcome::Damaged; // which ends the outer ones too
            trouble = isDamaged ? trouble : outside;
            return !isLocked && database.EndNested(keep) == Outcome::Done && keep;
        };
        try {
            bool const wanted = body();
            return end(wanted && trouble == Outcome::Done);
        } catch (...) {
            end(false);
            throw;
        }
    }

    bool ReadTogether(std::function<void()> const &body) {
        {
            std::lock_guard const lock(mutex);
            std::ignore = DoPostponedAtOnce();
            if (depth > 0 || isPostponing) { // nobody else writes meanwhile
                body();
                return trouble == Outcome::Done;
            }
        }
        bool isWhole = true;
        bool hasRun = false;
        Outcome const outcome = Patiently(kPatience, [&] {
            if (hasRun)
                return Outcome::Done; // what it found damaged has been set aside
            Outcome opened = database.Open(Access::Read);
            if (opened == Outcome::Done)
                opened = database.BeginReading();
            isWhole = isWhole && opened != Outcome::Damaged;
            if (opened != Outcome::Done)
                return opened;
            hasRun = true;
            Depth const inside(*this);
            body();
            isWhole = isWhole && trouble == Outcome::Done;
            return trouble == Outcome::Damaged ? Outcome::Damaged : Outcome::Done;
        });
        if (hasRun)
            return isWhole;
        body();
        return isWhole && outcome == Outcome::Nothing; // without a file there is nothing to hold on to
    }

    // --- what could not be done at once ---

    /// Takes a change down, so that reads see it. False if it is not wanted.
    bool Postpone(std::function<bool()> const &body) {
        auto const former = seen;
        bool const wasPostponing = std::exchange(isPostponing, true);
        bool const wanted = body();
        isPostponing = wasPostponing;
        if (!wanted)
            seen = former;
        else if (!isPostponing)
            postponed.push_back(body);
        return wanted;
    }

    /// Done if none is left.
    Outcome DoPostponed() {
        if (postponed.empty() || depth > 0 || isPostponing || isDoingPostponed)
            return Outcome::Done;
        isDoingPostponed = true;
        Outcome const outcome = TryTransact([&] {
            for (auto const &body : postponed)
                std::ignore = TransactNested(body); // one that is refused now changes nothing
            return true;
        });
        isDoingPostponed = false;
        if (outcome == Outcome::Busy || outcome == Outcome::Damaged)
            return outcome;
        if (outcome != Outcome::Done)
            Report::TraceMessage(Report::kTraceOpen, "settings could not be written later either");
        postponed.clear();
        seen.clear();
        return Outcome::Done;
    }
    Outcome DoPostponedAtOnce() {
        database.SetPatience(milliseconds(0));
        return DoPostponed();
    }

    /// While a change is taken down: takes this part of it down.
    bool IsPostponed(DString const &key, DString const &name, std::optional<Value> const &value) {
        std::lock_guard const lock(mutex);
        if (isPostponing)
            seen[{NormalKey(key), name}] = value;
        return isPostponing;
    }

    /// The value as a postponed change will leave it; null if none says anything of it.
    [[nodiscard]] std::optional<Value> const *Seen(DString const &key, DString const &name) const {
        auto const at = isDoingPostponed ? seen.end() : seen.find({NormalKey(key), name});
        return at == seen.end() ? nullptr : &at->second;
    }

    /// A transaction or a reading together, until its end.
    struct Depth {
        Impl &impl;
        explicit Depth(Impl &owner) : impl(owner) {
            ++impl.depth;
            impl.trouble = Outcome::Done;
        }
        Depth(Depth const &) = delete;
        Depth &operator=(Depth const &) = delete;
        ~Depth() {
            --impl.depth;
            impl.database.Rollback(); // unless it has been committed
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
};

namespace {

/// The stores by their files' names.
class KnownStores final : ProcessMoments {
public:
    static KnownStores &Instance() {
        static auto &stores = *new KnownStores; // never destroyed: static objects may save settings at the end
        return stores;
    }
    SettingsStore &Of(DString const &file) {
        if (SettingsStore *const known = Find(file, nullptr))
            return *known;
        // Made outside of the lock, since a fork takes that behind the one which a new store needs.
        return *Find(file, std::make_unique<SettingsStore>(file));
    }

private:
    KnownStores() : ProcessMoments(Locks::Inner) {}
    void BeforeFork() override { m_mutex.lock(); }
    void AfterFork(Side) override { m_mutex.unlock(); }
    SettingsStore *Find(DString const &file, std::unique_ptr<SettingsStore> made) {
        std::lock_guard const lock(m_mutex);
        std::unique_ptr<SettingsStore> &store = m_stores[file];
        if (store == nullptr)
            store = std::move(made);
        return store.get();
    }

    std::mutex m_mutex;
    std::map<DString, std::unique_ptr<SettingsStore>> m_stores;
};

} // namespace

SettingsStore &SettingsStore::Instance() { return KnownStores::Instance().Of(GetSettingsFile()); }
SettingsStore &SettingsStore::Machine() { return KnownStores::Instance().Of(GetMachineSettingsFile()); }

SettingsStore::SettingsStore(DString file) : m_impl(std::make_unique<Impl>(std::move(file))) {}

SettingsStore::~SettingsStore() = default;

std::optional<SettingsStore::Value> SettingsStore::Read(DString const &key, DString const &name) const {
    Value value;
    Outcome const outcome = m_impl->Look([&] { return m_impl->database.Read(NormalKey(key), name, value); });
    std::lock_guard const lock(m_impl->mutex);
    if (std::optional<Value> const *const seen = m_impl->Seen(key, name))
        return *seen;
    return outcome == Outcome::Done ? std::optional(std::move(value)) : std::nullopt;
}

bool SettingsStore::Write(DString const &key, DString const &name, Value const &value) {
    if (m_impl->IsPostponed(key, name, value))
        return true;
    return m_impl->Change([&] { return m_impl->database.Write(NormalKey(key), name, value); }) == Outcome::Done;
}

bool SettingsStore::Remove(DString const &key, DString const &name) {
    // Looked for first, so that no file is made for a value that is not there.
    if (!Read(key, name))
        return false;
    if (m_impl->IsPostponed(key, name, std::nullopt))
        return true;
    return m_impl->Change([&] { return m_impl->database.Remove(NormalKey(key), name); }) == Outcome::Done;
}

bool SettingsStore::CreateKey(DString const &key) {
    return m_impl->Change([&] { return m_impl->database.MakeKey(NormalKey(key)); }) == Outcome::Done;
}

bool SettingsStore::HasKey(DString const &key) const {
    DString const normal = NormalKey(key);
    return normal.empty() || m_impl->Look([&] { return m_impl->database.HasKey(normal); }) == Outcome::Done;
}

bool SettingsStore::RemoveTree(DString const &key) {
    return m_impl->Change([&] { return m_impl->database.RemoveTree(NormalKey(key)); }) == Outcome::Done;
}

std::vector<DString> SettingsStore::Names(DString const &key) const {
    std::vector<DString> names;
    m_impl->Look([&] { return m_impl->database.Names(NormalKey(key), names); });
    return names;
}

std::vector<DString> SettingsStore::Children(DString const &key) const {
    std::vector<DString> children;
    m_impl->Look([&] { return m_impl->database.Children(NormalKey(key), children); });
    return children;
}

bool SettingsStore::Transact(std::function<bool()> const &body) {
    {
        std::lock_guard const lock(m_impl->mutex);
        if (m_impl->isPostponing)
            return m_impl->Postpone(body);
        if (m_impl->depth > 0)
            return m_impl->TransactNested(body);
    }
    return m_impl->Transact(kPatience, body) == Outcome::Done;
}

bool SettingsStore::TransactSoon(std::function<bool()> const &body) {
    {
        std::lock_guard const lock(m_impl->mutex);
        if (m_impl->isPostponing || m_impl->depth > 0)
            return Transact(body);
        if (m_impl->DoPostponedAtOnce() == Outcome::Busy)
            return m_impl->Postpone(body);
    }
    Outcome const outcome = m_impl->Transact(kSoon, body);
    if (outcome != Outcome::Busy)
        return outcome == Outcome::Done;
    std::lock_guard const lock(m_impl->mutex);
    return m_impl->Postpone(body);
}

bool SettingsStore::WriteSoon(DString const &key, DString const &name, Value const &value) {
    return TransactSoon([this, key, name, value] { return Write(key, name, value); });
}

bool SettingsStore::ReadTogether(std::function<void()> const &body) const { return m_impl->ReadTogether(body); }

bool SettingsStore::IsWhole() const {
    bool isWhole = true;
    Outcome const outcome = m_impl->Patiently(kPatience, [&] {
        Outcome const opened = m_impl->database.Open(Access::Read);
        Outcome const checked = opened == Outcome::Done ? m_impl->database.Check() : opened;
        isWhole = isWhole && checked != Outcome::Damaged;
        return checked;
    });
    return isWhole && (outcome == Outcome::Done || outcome == Outcome::Nothing);
}

DString SettingsStore::ReadString(DString const &key, DString const &name, DString const &fallback) const {
    std::optional<Value> const value = Read(key, name);
    auto const *const text = value ? std::get_if<DString>(&*value) : nullptr;
    return text == nullptr ? fallback : *text;
}

std::int64_t SettingsStore::ReadInt(DString const &key, DString const &name, std::int64_t fallback) const {
    std::optional<Value> const value = Read(key, name);
    auto const *const number = value ? std::get_if<std::int64_t>(&*value) : nullptr;
    return number == nullptr ? fallback : *number;
}

} // namespace zelvar
