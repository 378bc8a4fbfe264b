#pragma once

#include "zelvar/base/Containers.h"
#include "zelvar/base/DString.h"

namespace zelvar {

/// Settings of one section: texts and vectors of texts by key. Read and written per call, nothing is held. Writing
/// never waits (`SettingsStore::TransactSoon`).
class ZELVAR_API DCnfg {
public:
    /// Kinds of settings; only the value 1, settings of the user, is kept here.
    enum ESttngType { SttngType_User = 1 };

    virtual ~DCnfg() = default;
    [[nodiscard]] bool HasKey(DString const &key) const;
    [[nodiscard]] DString ReadString(DString const &key, DString const &fallback, bool trim = false) const;
    bool WriteString(DString const &key, DString const &value);
    /// Empties `out` first. False if there is no such key.
    bool ReadStringVec(DString const &key, DVectorSafe<DString> &out) const;
    bool WriteStringVec(DString const &key, DVectorSafe<DString> const &values);
    bool RemoveKey(DString const &key);

protected:
    /// `path` names the section in the store. Without `create` writing into a section that does not exist fails.
    explicit DCnfg(DString path, bool create) : m_path(std::move(path)), m_create(create) {}
    DCnfg(DCnfg const &) = default;
    DCnfg(DCnfg &&) = default;
    DCnfg &operator=(DCnfg const &) = default;
    DCnfg &operator=(DCnfg &&) = default;

private:
    [[nodiscard]] bool MayWrite() const;

    DString m_path;
    bool m_create = true;
};

/// The user's settings under a section of the store: keys below "User".
class ZELVAR_API DUserCnfg : public DCnfg {
public:
    explicit DUserCnfg(DString const &section, bool create = true, ESttngType type = SttngType_User);
};

/// The application's profile: sections with entries, the same store under "Profile" and the application's key, so that
/// applications do not meet. Without that key reading gives the fallback and writing fails. Writing never waits. Any
/// thread.
class ZELVAR_API Profile {
public:
    /// The key of the application, default "Zelvar". Empty: positions are neither stored nor restored.
    static void SetRegistryKey(DString key);
    [[nodiscard]] static bool HasRegistryKey();
    [[nodiscard]] static int GetInt(DString const &section, DString const &entry, int fallback);
    static bool WriteInt(DString const &section, DString const &entry, int value);
    [[nodiscard]] static DString GetString(DString const &section, DString const &entry, DString const &fallback);
    static bool WriteString(DString const &section, DString const &entry, DString const &value);
};

} // namespace zelvar
