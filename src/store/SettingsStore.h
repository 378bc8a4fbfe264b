#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace zelvar {

class SettingsSession;

/// The one store of settings: keys in a tree, typed values under each key, in an SQLite file.
///
/// Keys are paths with "\" between their elements, compared with case; the empty key is the root, and separators at
/// the ends or doubled count for nothing. Texts, names and keys are bytes. Every write is one
/// transaction: after a kill at any moment it is there whole or not at all. Several processes may use one file at the
/// same time: who finds the file locked waits, for ten seconds at most. A damaged file is set aside as
/// "<name>.damaged-<n>" with a message and a new one is begun. Reads and writes on a file that cannot be opened or
/// written answer with "nothing" and false. Any thread; a child made by fork may go on using it, but one that was made
/// inside a transaction only reads.
class ZELVAR_API SettingsStore {
public:
    using Bytes = std::vector<std::uint8_t>;
    /// Bytes under a type number that the application gives a meaning; the typed reads below pass it over.
    struct Typed {
        std::uint32_t type = 0;
        Bytes data{};
        friend bool operator==(Typed const &, Typed const &) = default;
    };
    using Value = std::variant<std::int64_t, double, DString, std::vector<DString>, Bytes, Typed>;

    /// The store named by `GetSettingsFile()`. Made at the first call, opened at the first read or write; kept per file
    /// name.
    static SettingsStore &Instance();
    /// The same for `GetMachineSettingsFile()`, which all users read.
    static SettingsStore &Machine();

    explicit SettingsStore(DString file);
    ~SettingsStore();
    SettingsStore(SettingsStore const &) = delete;
    SettingsStore &operator=(SettingsStore const &) = delete;

    [[nodiscard]] std::optional<Value> Read(DString const &key, DString const &name) const;
    bool Write(DString const &key, DString const &name, Value const &value);
    /// True if the value existed.
    bool Remove(DString const &key, DString const &name);
    /// Makes a key, which stays until it is removed even with no value under it. Writing makes keys by itself.
    bool CreateKey(DString const &key);
    [[nodiscard]] bool HasKey(DString const &key) const;
    /// Removes the key with all that lies below it.
    bool RemoveTree(DString const &key);
    [[nodiscard]] std::vector<DString> Names(DString const &key) const;    ///< of the values under the key, by bytes
    [[nodiscard]] std::vector<DString> Children(DString const &key) const; ///< last elements of the keys below
    /// Runs `body` in one transaction: all of it or, if it returns false, throws, or finds something that it cannot
    /// read or write, nothing. It runs once more on the new file when the old one turns out to be damaged.
    bool Transact(std::function<bool()> const &body);
    /// The same for who cannot wait, as the thread of the windows: within a tenth of a second. Where another process
    /// keeps the file locked, the change is taken down, seen by `Read` at once, and done with a later operation on this
    /// store or at the end of the process; true then too. `body` runs again at that time: it holds what it needs.
    bool TransactSoon(std::function<bool()> const &body);
    bool WriteSoon(DString const &key, DString const &name, Value const &value);
    /// Runs `body`, which sees the store as it is now, whatever others write meanwhile. Not for writing. False if any
    /// of it could not be read.
    bool ReadTogether(std::function<void()> const &body) const;
    /// Whether all of the file can be read; reads it through. What is damaged is set aside.
    [[nodiscard]] bool IsWhole() const;

    // The typed forms answer `fallback` when the value is missing or of another type.
    [[nodiscard]] DString ReadString(DString const &key, DString const &name, DString const &fallback = {}) const;
    [[nodiscard]] std::int64_t ReadInt(DString const &key, DString const &name, std::int64_t fallback) const;

private:
    /// Makes the change that `attempt` makes outside of a transaction, or takes it down as what `body` yields.
    template <class Body, class Attempt>
    bool Soon(Body const &body, Attempt const &attempt);

    std::unique_ptr<SettingsSession> m_session;
};

} // namespace zelvar
