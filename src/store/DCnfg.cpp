#include "zelvar/store/DCnfg.h"

#include "zelvar/store/SettingsStore.h"

#include <mutex>
#include <utility>

namespace zelvar {

namespace {

constexpr char const *kUserSettings = "User\\";
constexpr char const *kProfile = "Profile\\";

struct ApplicationKey {
    std::mutex mutex;
    DString key = "Zelvar";
};

ApplicationKey &TheApplicationKey() {
    static auto &key = *new ApplicationKey; // static objects may store positions while the process ends
    return key;
}

/// Path of a section of the profile; empty without an application key.
DString ProfilePath(DString const &section) {
    std::lock_guard const lock(TheApplicationKey().mutex);
    DString const &key = TheApplicationKey().key;
    return key.empty() ? DString() : kProfile + key + "\\" + section;
}

} // namespace

bool DCnfg::HasKey(DString const &key) const { return SettingsStore::Instance().Read(m_path, key).has_value(); }

DString DCnfg::ReadString(DString const &key, DString const &fallback, bool trim) const {
    DString const text = SettingsStore::Instance().ReadString(m_path, key, fallback);
    return trim ? DString(Trimmed(text)) : text;
}

bool DCnfg::WriteString(DString const &key, DString const &value) {
    return MayWrite() && SettingsStore::Instance().WriteSoon(m_path, key, value);
}

bool DCnfg::ReadStringVec(DString const &key, DVectorSafe<DString> &out) const {
    out.clear();
    auto const value = SettingsStore::Instance().Read(m_path, key);
    auto const *const texts = value ? std::get_if<std::vector<DString>>(&*value) : nullptr;
    if (texts == nullptr)
        return false;
    for (DString const &text : *texts)
        out.push_back(text);
    return true;
}

bool DCnfg::WriteStringVec(DString const &key, DVectorSafe<DString> const &values) {
    return MayWrite() &&
           SettingsStore::Instance().WriteSoon(m_path, key, std::vector<DString>(values.begin(), values.end()));
}

bool DCnfg::RemoveKey(DString const &key) {
    SettingsStore &store = SettingsStore::Instance();
    return HasKey(key) && store.TransactSoon([&store, path = m_path, key] { return store.Remove(path, key); });
}

bool DCnfg::MayWrite() const { return m_create || SettingsStore::Instance().HasKey(m_path); }

DUserCnfg::DUserCnfg(DString const &section, bool create, ESttngType type)
    : DCnfg(kUserSettings + section, create && type == SttngType_User) {}

void Profile::SetRegistryKey(DString key) {
    std::lock_guard const lock(TheApplicationKey().mutex);
    TheApplicationKey().key = std::move(key);
}

bool Profile::HasRegistryKey() {
    std::lock_guard const lock(TheApplicationKey().mutex);
    return !TheApplicationKey().key.empty();
}

int Profile::GetInt(DString const &section, DString const &entry, int fallback) {
    DString const path = ProfilePath(section);
    std::int64_t const value = path.empty() ? fallback : SettingsStore::Instance().ReadInt(path, entry, fallback);
    return std::in_range<int>(value) ? static_cast<int>(value) : fallback;
}

bool Profile::WriteInt(DString const &section, DString const &entry, int value) {
    DString const path = ProfilePath(section);
    return !path.empty() && SettingsStore::Instance().WriteSoon(path, entry, std::int64_t{value});
}

DString Profile::GetString(DString const &section, DString const &entry, DString const &fallback) {
    DString const path = ProfilePath(section);
    return path.empty() ? fallback : SettingsStore::Instance().ReadString(path, entry, fallback);
}

bool Profile::WriteString(DString const &section, DString const &entry, DString const &value) {
    DString const path = ProfilePath(section);
    return !path.empty() && SettingsStore::Instance().WriteSoon(path, entry, value);
}

} // namespace zelvar
