#pragma once

#include "zelvar/store/SettingsStore.h"

#include <cstdint>

namespace zelvar {

/// Registry wrapper: one key of a settings store at a time, with named values of registry types under it. The user's
/// store, or with `admin` the machine's. One thread at a time.
class ZELVAR_API RegistryKey {
public:
    /// What the last read or write of a value came to; the numbers of the status are those of registries.
    struct LastResult {
        std::uint32_t status = 0; ///< 0 done, 2 no such value, 5 refused, 6 no key is open
        std::uint32_t type = 0;
        std::uint32_t size = 0; ///< bytes
    };

    /// `readOnly`: makes no keys and writes no values. The store must outlive this.
    RegistryKey(int admin, int readOnly);
    RegistryKey(SettingsStore &store, int admin, int readOnly);

    /// Makes a key current; false, and none is, if it does not exist. The empty path is the root.
    bool Open(char const *path);
    /// The same, but makes it with all above it.
    bool CreateKey(char const *path);
    void Close();
    [[nodiscard]] bool IsOpen() const { return m_isOpen; }
    /// As it was given.
    [[nodiscard]] DString const &GetPath() const { return m_path; }
    /// Names under the current key, by bytes; false if none is open.
    bool ReadKeyValues(std::vector<DString> &names) const;
    bool ReadSubKeys(std::vector<DString> &names) const;
    [[nodiscard]] LastResult const &GetLastResult() const { return m_last; }

protected:
    [[nodiscard]] SettingsStore &Store() const { return *m_store; }
    [[nodiscard]] int IsAdmin() const { return m_admin; }
    [[nodiscard]] int IsReadOnly() const { return m_readOnly; }
    void SetLastResult(LastResult const &last) { m_last = last; }

private:
    SettingsStore *m_store; ///< never null
    int m_admin;
    int m_readOnly;
    bool m_isOpen = false;
    DString m_path{};
    LastResult m_last{};
};

} // namespace zelvar
