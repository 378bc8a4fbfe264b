#pragma once

#include "zelvar/store/SettingsMemory.h"

#include <array>
#include <chrono>

#include <sys/types.h>

struct sqlite3;
struct sqlite3_stmt;

namespace zelvar {

/// One SQLite connection to a settings file: opening, its tables, its prepared statements, the care for damage.
///
/// Opened when first needed, and anew when the file behind the name has become another one. Not locked: its store does
/// that. The file must never be opened by other means in this process: closing it would drop SQLite's locks.
class SettingsDatabase {
public:
    enum class Access { Read, Write };
    /// What became of an operation.
    enum class Outcome {
        Done,
        Nothing, ///< no such row, or no file to read
        Busy,    ///< another process is at it; may be tried again
        Failed,  ///< not writable, disk full ...
        Damaged, ///< the file is not, or no longer, a database
    };
    using Value = SettingsStore::Value;

    explicit SettingsDatabase(DString file) : m_file(std::move(file)) {}
    SettingsDatabase(SettingsDatabase const &) = delete;
    SettingsDatabase &operator=(SettingsDatabase const &) = delete;
    ~SettingsDatabase() { Close(); }

    /// Makes the connection usable. Reading creates no file. Not to be called inside a transaction.
    [[nodiscard]] Outcome Open(Access access);
    /// Closes; nothing that was written is lost.
    void Close();
    /// Takes the connection for that of the parent, in the child of a fork: not even closed.
    void Abandon();
    /// How long an operation waits by itself for other processes. Some find them busy without waiting.
    void SetPatience(std::chrono::milliseconds patience);
    /// Closes without folding the log into the file: quick, for the moment of a fork.
    void CloseQuickly();
    /// After `Damaged`: moves the file out of the way, tells the user, and leaves the place free for a new one. False
    /// if the file cannot be moved, or not now.
    bool SetAside();
    /// Reads all of the file: Done if nothing of it is damaged.
    [[nodiscard]] Outcome Check();

    [[nodiscard]] Outcome Begin();
    [[nodiscard]] Outcome BeginReading();
    [[nodiscard]] Outcome Commit();
    void Rollback();
    [[nodiscard]] Outcome BeginNested();
    [[nodiscard]] Outcome EndNested(bool keep);

    // Keys are in their normal form: no separator at either end, none doubled.
    [[nodiscard]] Outcome Read(std::string_view key, std::string_view name, Value &value);
    [[nodiscard]] Outcome Write(std::string_view key, std::string_view name, Value const &value);
    /// A transaction by itself, half the work of one around `Write`: another value in a row that is there. Nothing, and
    /// nothing done, without such a row, or if it has that value.
    [[nodiscard]] Outcome Rewrite(std::string_view key, std::string_view name, Value const &value);
    /// Makes the key and all above it.
    [[nodiscard]] Outcome MakeKey(std::string_view key);
    [[nodiscard]] Outcome HasKey(std::string_view key);
    [[nodiscard]] Outcome Remove(std::string_view key, std::string_view name);
    [[nodiscard]] Outcome RemoveTree(std::string_view key);
    [[nodiscard]] Outcome Names(std::string_view key, std::vector<DString> &names);
    [[nodiscard]] Outcome Children(std::string_view key, std::vector<DString> &children);

private:
    enum Sql : std::size_t {
        kBegin,
        kBeginReading,
        kCommit,
        kRollback,
        kSavepoint,
        kRelease,
        kRollbackTo,
        kSelect,
        kUpsert,
        kUpdate,
        kDelete,
        kDeleteValues,
        kDeleteKeys,
        kNames,
        kFindKey,
        kInsertKey,
        kNextKey,
        kSqlCount
    };
    class Statement;
    /// Which file stands behind the name; all 0 for none.
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0; ///< compared only while the file is taken as unchanging
        time_t modified = 0;
        friend bool operator==(Identity const &, Identity const &) = default;
    };

    [[nodiscard]] static char const *TextOf(Sql sql);
    [[nodiscard]] Identity Look() const;
    [[nodiscard]] Outcome Connect(Access access);
    [[nodiscard]] Outcome ConnectUnchanging();
    [[nodiscard]] Outcome Prepare();
    [[nodiscard]] Outcome CreateTables();
    [[nodiscard]] Outcome Run(Sql sql);
    [[nodiscard]] int Execute(char const *sql);
    [[nodiscard]] int Query(char const *sql, DString &answer);

    DString const m_file;
    sqlite3 *m_connection = nullptr;
    std::array<sqlite3_stmt *, kSqlCount> m_statements{};
    Identity m_identity{};
    pid_t m_process = 0;
    std::chrono::milliseconds m_patience{0};
    DString m_madeKey{}; ///< is there for the rest of this transaction; empty for none
    SettingsMemory m_memory{};
    bool m_hasLog = false; ///< a write-ahead log, with its shared memory
    bool m_hasTables = false;
    bool m_unchanging = false; ///< opened for reading where SQLite may not even keep its lock files
    bool m_told = false;       ///< the user knows of a damage
};

} // namespace zelvar
