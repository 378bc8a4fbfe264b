#include "zelvar/store/SettingsStore.h"

#include "zelvar/base/Directories.h"
#include "zelvar/base/ProcessMoments.h"
#include "zelvar/store/SettingsSession.h"

#include <map>
#include <mutex>
#include <utility>

namespace zelvar {

namespace {

using Outcome = SettingsSession::Outcome;

constexpr std::chrono::milliseconds kSoon{80}; // how long a change waits for others where nobody may wait

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
    KnownStores() = default;
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
    Known m_known{*this, Locks::Inner};
};

} // namespace

SettingsStore &SettingsStore::Instance() { return KnownStores::Instance().Of(GetSettingsFile()); }
SettingsStore &SettingsStore::Machine() { return KnownStores::Instance().Of(GetMachineSettingsFile()); }

SettingsStore::SettingsStore(DString file) : m_session(std::make_unique<SettingsSession>(std::move(file))) {}

SettingsStore::~SettingsStore() = default;

std::optional<SettingsStore::Value> SettingsStore::Read(DString const &key, DString const &name) const {
    Value value;
    Outcome const outcome = m_session->Look([&] { return m_session->database.Read(NormalKey(key), name, value); });
    std::lock_guard const lock(m_session->mutex);
    if (std::optional<Value> const *const seen = m_session->Seen(key, name))
        return *seen;
    return outcome == Outcome::Done ? std::optional(std::move(value)) : std::nullopt;
}

bool SettingsStore::Write(DString const &key, DString const &name, Value const &value) {
    if (m_session->IsPostponed(key, name, value))
        return true;
    {
        std::lock_guard const lock(m_session->mutex);
        if (m_session->depth > 0)
            return m_session->Inside([&] { return m_session->database.Write(NormalKey(key), name, value); }) ==
                   Outcome::Done;
    }
    return m_session->WriteAlone(SettingsSession::kPatience, key, name, value) == Outcome::Done;
}

bool SettingsStore::Remove(DString const &key, DString const &name) {
    // Looked for first, so that no file is made for a value that is not there.
    if (!Read(key, name))
        return false;
    if (m_session->IsPostponed(key, name, std::nullopt))
        return true;
    return m_session->Change([&] { return m_session->database.Remove(NormalKey(key), name); }) == Outcome::Done;
}

bool SettingsStore::CreateKey(DString const &key) {
    return m_session->Change([&] { return m_session->database.MakeKey(NormalKey(key)); }) == Outcome::Done;
}

bool SettingsStore::HasKey(DString const &key) const {
    DString const normal = NormalKey(key);
    return normal.empty() || m_session->Look([&] { return m_session->database.HasKey(normal); }) == Outcome::Done;
}

bool SettingsStore::RemoveTree(DString const &key) {
    return m_session->Change([&] { return m_session->database.RemoveTree(NormalKey(key)); }) == Outcome::Done;
}

std::vector<DString> SettingsStore::Names(DString const &key) const {
    std::vector<DString> names;
    m_session->Look([&] { return m_session->database.Names(NormalKey(key), names); });
    return names;
}

std::vector<DString> SettingsStore::Children(DString const &key) const {
    std::vector<DString> children;
    m_session->Look([&] { return m_session->database.Children(NormalKey(key), children); });
    return children;
}

bool SettingsStore::Transact(std::function<bool()> const &body) {
    {
        std::lock_guard const lock(m_session->mutex);
        if (m_session->isPostponing)
            return m_session->Postpone(body);
        if (m_session->depth > 0)
            return m_session->TransactNested(body);
    }
    return m_session->Transact(SettingsSession::kPatience, body) == Outcome::Done;
}

bool SettingsStore::TransactSoon(std::function<bool()> const &body) {
    return Soon([&] { return body; }, [&] { return m_session->Transact(kSoon, body); });
}

bool SettingsStore::WriteSoon(DString const &key, DString const &name, Value const &value) {
    return Soon([&] { return [this, key, name, value] { return Write(key, name, value); }; },
                [&] { return m_session->WriteAlone(kSoon, key, name, value); });
}

template <class Body, class Attempt>
bool SettingsStore::Soon(Body const &body, Attempt const &attempt) {
    {
        std::lock_guard const lock(m_session->mutex);
        if (m_session->isPostponing || m_session->depth > 0)
            return Transact(body());
        if (m_session->DoPostponedAtOnce() == Outcome::Busy)
            return m_session->Postpone(body());
    }
    Outcome const outcome = attempt();
    if (outcome != Outcome::Busy)
        return outcome == Outcome::Done;
    std::lock_guard const lock(m_session->mutex);
    return m_session->Postpone(body());
}

bool SettingsStore::ReadTogether(std::function<void()> const &body) const { return m_session->ReadTogether(body); }

bool SettingsStore::IsWhole() const {
    bool isWhole = true;
    Outcome const outcome = m_session->Patiently(SettingsSession::kPatience, [&] {
        Outcome const opened = m_session->database.Open(SettingsSession::Access::Read);
        Outcome const checked = opened == Outcome::Done ? m_session->database.Check() : opened;
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
