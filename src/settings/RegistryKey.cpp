#include "zelvar/settings/RegistryKey.h"

namespace zelvar {

RegistryKey::RegistryKey(int admin, int readOnly)
    : RegistryKey(admin != 0 ? SettingsStore::Machine() : SettingsStore::Instance(), admin, readOnly) {}

RegistryKey::RegistryKey(SettingsStore &store, int admin, int readOnly)
    : m_store(&store), m_admin(admin), m_readOnly(readOnly) {}

bool RegistryKey::Open(char const *path) {
    m_path = path == nullptr ? "" : path;
    m_isOpen = m_store->HasKey(m_path);
    return m_isOpen;
}

bool RegistryKey::CreateKey(char const *path) {
    m_path = path == nullptr ? "" : path;
    m_isOpen = m_readOnly == 0 && m_store->CreateKey(m_path);
    return m_isOpen;
}

void RegistryKey::Close() {
    m_path.clear();
    m_isOpen = false;
}

bool RegistryKey::ReadKeyValues(std::vector<DString> &names) const {
    if (m_isOpen)
        names = m_store->Names(m_path);
    return m_isOpen;
}

bool RegistryKey::ReadSubKeys(std::vector<DString> &names) const {
    if (m_isOpen)
        names = m_store->Children(m_path);
    return m_isOpen;
}

} // namespace zelvar
