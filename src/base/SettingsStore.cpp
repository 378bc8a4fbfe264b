#include "zelvar/base/SettingsStore.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Directories.h"
#include "zelvar/base/ProcessMoments.h"
#include "zelvar/base/SettingsDatabase.h"

#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace zelvar {

namespace {

using Access = SettingsDatabase::Access;
using Outcome = SettingsDatabase::Outcome;

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
/// closed while the process forks, unless the forking thread is inside a transaction of its own.
struct SettingsStore::Impl final : ProcessMoments {
    explicit Impl(DString file) : database(DFile(std::move(file)).GetAbsolutePath()) {}

    void BeforeFork() override {
        mutex.lock();
        if (depth == 0)
            database.CloseQuickly();
    }
    void AfterFork(Side) override { mutex.unlock(); }
    void BeforeExit() override {
        std::lock_guard const lock(mutex);
        if (depth == 0)
            database.Close();
    }

    /// Makes the database usable, in place of a damaged one if need be.
    bool Open(Access access) {
        if (depth > 0)
            return true;
        Outcome outcome = database.Open(access);
        if (outcome == Outcome::Damaged && database.SetAside())
            outcome = database.Open(access);
        return outcome == Outcome::Done;
    }

    template <class Operation>
    Outcome Look(Operation const &operation) {
        std::lock_guard const lock(mutex);
        return Open(Access::Read) ? Care(operation()) : Outcome::Nothing;
    }

    /// Runs `operation` as a transaction, or as a part of the one that is open.
    template <class Operation>
    Outcome Change(Operation const &operation) {
        std::lock_guard const lock(mutex);
        if (depth > 0) {
            Outcome const outcome = operation();
            failed = failed || outcome == Outcome::Failed || outcome == Outcome::Damaged;
            return outcome;
        }
        Outcome outcome = Try(operation);
        if (outcome == Outcome::Damaged && database.SetAside())
            outcome = Try(operation);
        return outcome;
    }

    template <class Operation>
    Outcome Try(Operation const &operation) {
        if (!Open(Access::Write))
            return Outcome::Failed;
        Outcome outcome = database.Begin();
        if (outcome != Outcome::Done)
            return outcome;
        outcome = operation();
        Outcome const ended = outcome == Outcome::Done ? database.Commit() : outcome;
        if (ended != Outcome::Done)
            database.Rollback();
        return ended;
    }

    /// After a read outside of a transaction.
    Outcome Care(Outcome outcome) {
        if (outcome == Outcome::Damaged && depth == 0)
            database.SetAside();
        return outcome;
    }

    ForkableMutex mutex;
    SettingsDatabase database;
    int depth = 0;       ///< transactions of `Transact`, one inside the other
    bool failed = false; ///< a write of the innermost one failed
};

namespace {

SettingsStore &StoreOf(DString const &file) {
    static auto &mutex =
        *new std::mutex; // like the stores never destroyed: static objects may save settings at the end
    static auto &stores = *new std::map<DString, std::unique_ptr<SettingsStore>>;
    std::lock_guard const lock(mutex);
    std::unique_ptr<SettingsStore> &store = stores[file];
    if (!store)
        store = std::make_unique<SettingsStore>(file);
    return *store;
}

} // namespace

SettingsStore &SettingsStore::Instance() { return StoreOf(GetSettingsFile()); }
SettingsStore &SettingsStore::Machine() { return StoreOf(GetMachineSettingsFile()); }

SettingsStore::SettingsStore(DString file) : m_impl(std::make_unique<Impl>(std::move(file))) {}

SettingsStore::~SettingsStore() = default;

std::optional<SettingsStore::Value> SettingsStore::Read(DString const &key, DString const &name) const {
    Value value;
    Outcome const outcome = m_impl->Look([&] { return m_impl->database.Read(NormalKey(key), name, value); });
    return outcome == Outcome::Done ? std::optional(std::move(value)) : std::nullopt;
}

bool SettingsStore::Write(DString const &key, DString const &name, Value const &value) {
    return m_impl->Change([&] { return m_impl->database.Write(NormalKey(key), name, value); }) == Outcome::Done;
}

bool SettingsStore::Remove(DString const &key, DString const &name) {
    // Looked for first, so that no file is made for a value that is not there.
    if (!Read(key, name))
        return false;
    return m_impl->Change([&] { return m_impl->database.Remove(NormalKey(key), name); }) == Outcome::Done;
}

bool SettingsStore::CreateKey(DString const &key) {
    return m_impl->Change([&] { return m_impl->database.MakeKey(NormalKey(key)); }) == Outcome::Done;
}

bool SettingsStore::HasKey(DString const &key) const {
    return m_impl->Look([&] { return m_impl->database.HasKey(NormalKey(key)); }) == Outcome::Done;
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
    std::lock_guard const lock(m_impl->mutex);
    bool const nested = m_impl->depth > 0;
    auto const begin = [&] { return nested ? m_impl->database.BeginNested() : m_impl->database.Begin(); };
    if (!m_impl->Open(Access::Write) || begin() != Outcome::Done)
        return false;
    bool const failedOutside = std::exchange(m_impl->failed, false);
    ++m_impl->depth;
    auto const end = [&](bool keep) {
        --m_impl->depth;
        m_impl->failed = failedOutside;
        if (nested)
            return m_impl->database.EndNested(keep) == Outcome::Done && keep;
        if (keep && m_impl->database.Commit() == Outcome::Done)
            return true;
        m_impl->database.Rollback();
        return false;
    };
    try {
        bool const wanted = body();
        return end(wanted && !m_impl->failed);
    } catch (...) {
        end(false);
        throw;
    }
}

void SettingsStore::ReadTogether(std::function<void()> const &body) const {
    std::lock_guard const lock(m_impl->mutex);
    // Inside a transaction nobody else writes; without a file there is nothing to hold on to.
    if (m_impl->depth > 0 || !m_impl->Open(Access::Read) || m_impl->database.BeginReading() != Outcome::Done) {
        body();
        return;
    }
    struct Reading {
        Impl &impl;
        explicit Reading(Impl &owner) : impl(owner) { ++impl.depth; }
        ~Reading() {
            --impl.depth;
            impl.failed = false;
            impl.database.Rollback();
        }
    } const reading(*m_impl);
    body();
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
