#include "zelvar/store/SettingsDatabase.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/FileDescriptor.h"
#include "zelvar/base/Report.h"
#include "zelvar/store/SettingsStatement.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <tuple>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statfs.h>

namespace zelvar {

namespace {

constexpr int kVersion = 1; // of the tables
// A change of a value goes to the log as a whole page. Small ones cost less, and the log is folded into the file, which
// waits for the disk, after as many bytes as with the pages that SQLite takes by itself: so a quarter as often.
constexpr int kPageBytes = 1024;
constexpr int kLogBytes = 4 << 20;
constexpr char kKeySeparator = '\\';
constexpr char kBehindSeparator = kKeySeparator + 1; // no key below "a" sorts at or behind "a]"

/// Only one process at a time makes tables or sets a file aside. Where the directory cannot be locked, chance decides.
class DirectoryLock {
public:
    explicit DirectoryLock(DString const &file)
        : m_directory(open(DString(ParentPathOf(file)).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        // Released by closing. Not waited for: who holds it may have been stopped.
        m_isTaken = m_directory.IsOpen() && flock(m_directory.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    }
    /// Whether another process has it.
    [[nodiscard]] bool IsTaken() const { return m_isTaken; }

private:
    FileDescriptor m_directory;
    bool m_isTaken = false;
};

/// The write-ahead log needs memory shared between processes, which file servers do not give.
bool IsOnNetwork(DString const &file) {
    struct statfs status {};
    if (statfs(DString(ParentPathOf(file)).c_str(), &status) != 0)
        return false;
    // NFS, the three ages of SMB, AFS, Plan 9.
    constexpr std::array<unsigned, 6> remote = {0x6969, 0x517B, 0xFE534D42, 0xFF534D42, 0x5346414F, 0x01021997};
    auto const type = static_cast<unsigned>(status.f_type);
    return std::ranges::find(remote, type) != remote.end();
}

bool IsThere(DString const &file) {
    struct stat status {};
    return lstat(file.c_str(), &status) == 0;
}

/// "file:" name for SQLite, every byte that could mean something escaped.
DString UriOf(DString const &file) {
    DString uri = "file:";
    for (char const c : file) {
        bool const plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '/';
        uri += plain ? DString(1, c) : Format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return uri;
}

DString Below(std::string_view key) { return key.empty() ? DString() : DString(key) + kKeySeparator; }
/// No key below `key` reaches this. Empty for the root, which nothing is behind.
DString BehindBelow(std::string_view key) { return key.empty() ? DString() : DString(key) + kBehindSeparator; }

} // namespace

char const *SettingsDatabase::TextOf(Sql sql) {
    static constexpr char const *texts[] = {
        "BEGIN IMMEDIATE",
        "BEGIN",
        "COMMIT",
        "ROLLBACK",
        "SAVEPOINT nested",
        "RELEASE nested",
        "ROLLBACK TO nested",
        "SELECT kind, value FROM settings WHERE key = ?1 AND name = ?2",
        R"(INSERT INTO settings (key, name, kind, value) VALUES (?1, ?2, ?3, ?4) ON CONFLICT DO UPDATE
           SET kind = excluded.kind, value = excluded.value
           WHERE kind IS NOT excluded.kind OR value IS NOT excluded.value)",
        R"(UPDATE settings SET kind = ?3, value = ?4 WHERE key = ?1 AND name = ?2 AND (kind IS NOT ?3 OR value IS NOT ?4))",
        "DELETE FROM settings WHERE key = ?1 AND name = ?2",
        "DELETE FROM settings WHERE key = ?1 OR (key >= ?2 AND key < ?3)",
        "DELETE FROM keys WHERE key = ?1 OR (key >= ?2 AND key < ?3)",
        "SELECT name FROM settings WHERE key = ?1 ORDER BY name",
        "SELECT 1 FROM keys WHERE key = ?1",
        "INSERT OR IGNORE INTO keys (key) VALUES (?1)",
        "SELECT key FROM keys WHERE key >= ?1 AND key < ?2 ORDER BY key LIMIT 1",
    };
    static_assert(std::size(texts) == kSqlCount);
    return texts[sql];
}

SettingsDatabase::Identity SettingsDatabase::Look() const {
    struct stat status {};
    if (stat(m_file.c_str(), &status) != 0)
        return {};
    Identity identity{.device = status.st_dev, .inode = status.st_ino};
    if (m_unchanging) {
        identity.size = status.st_size;
        identity.modified = status.st_mtim.tv_sec;
    }
    return identity;
}

SettingsDatabase::Outcome SettingsDatabase::Open(Access access) {
    if (m_file.empty())
        return Outcome::Failed;
    if (m_connection != nullptr && m_process != getpid())
        Abandon();
    if (m_connection != nullptr && m_identity != Look())
        Close(); // removed or set aside by somebody; what went to the old file would be lost
    if (m_connection == nullptr) {
        if (Outcome const connected = Connect(access); connected != Outcome::Done)
            return connected;
    }
    if (access == Access::Write && sqlite3_db_readonly(m_connection, "main") != 0)
        return Outcome::Failed;
    if (m_hasTables)
        return Outcome::Done;
    Outcome const prepared = access == Access::Write ? CreateTables() : Prepare();
    if (prepared != Outcome::Done)
        Close();
    return prepared;
}

SettingsDatabase::Outcome SettingsDatabase::Connect(Access access) {
    m_unchanging = false;
    m_hasTables = false;
    m_process = getpid();
    m_identity = Look();
    if (m_identity == Identity{}) {
        if (access == Access::Read)
            return Outcome::Nothing;
        std::error_code failure;
        std::filesystem::create_directories(std::filesystem::path(m_file).parent_path(), failure);
        if (failure)
            return Outcome::Failed;
    }
    int const flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE |
                      (access == Access::Write ? SQLITE_OPEN_CREATE : 0);
    int const code = sqlite3_open_v2(m_file.c_str(), &m_connection, flags, nullptr);
    if (code != SQLITE_OK) {
        Close();
        return OutcomeOf(code);
    }
    SetPatience(m_patience);
    Outcome prepared = Prepare();
    if (prepared == Outcome::Failed && access == Access::Read)
        prepared = ConnectUnchanging();
    if (prepared == Outcome::Nothing && access == Access::Write)
        prepared = Outcome::Done; // the tables come next
    if (prepared != Outcome::Done)
        Close();
    // The look from before the opening holds otherwise: should the file have been replaced in between, the next `Open`
    // sees the difference.
    if (m_identity == Identity{})
        m_identity = Look();
    return prepared;
}

SettingsDatabase::Outcome SettingsDatabase::ConnectUnchanging() {
    // In a directory that cannot be written SQLite finds no place for the files that readers share.
    Close();
    m_unchanging = true;
    m_identity = Look();
    int const code = sqlite3_open_v2((UriOf(m_file) + "?immutable=1").c_str(), &m_connection,
                                     SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    return code == SQLITE_OK ? Prepare() : OutcomeOf(code);
}

/// Done if the tables are there, Nothing if they are to be made.
SettingsDatabase::Outcome SettingsDatabase::Prepare() {
    DString version;
    if (int const code = Query("PRAGMA user_version", version); code != SQLITE_OK)
        return OutcomeOf(code);
    m_hasTables = std::atoi(version.c_str()) >= kVersion;
    if (!m_hasTables)
        return Outcome::Nothing;
    DString journal;
    if (int const code = Query("PRAGMA journal_mode", journal); code != SQLITE_OK)
        return OutcomeOf(code);
    m_hasLog = journal == "wal" && !m_unchanging;
    DString pageBytes;
    if (int const code = Query("PRAGMA page_size", pageBytes); code != SQLITE_OK)
        return OutcomeOf(code);
    sqlite3_wal_autocheckpoint(m_connection, kLogBytes / std::max(std::atoi(pageBytes.c_str()), kPageBytes));
    // With the log a kill loses nothing; only a loss of power may lose the last writes, never the file.
    return OutcomeOf(Execute(IsOnNetwork(m_file) ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL"));
}

SettingsDatabase::Outcome SettingsDatabase::CreateTables() {
    DirectoryLock const lock(m_file);
    if (lock.IsTaken())
        return Outcome::Busy;
    if (Outcome const prepared = Prepare(); prepared != Outcome::Nothing)
        return prepared; // another process was first
    int code = Execute(Format("PRAGMA page_size=%d", kPageBytes).c_str());
    if (code == SQLITE_OK)
        code = Execute(IsOnNetwork(m_file) ? "PRAGMA journal_mode=DELETE" : "PRAGMA journal_mode=WAL");
    if (code == SQLITE_OK)
        code = Execute("BEGIN IMMEDIATE;"
                       "CREATE TABLE IF NOT EXISTS keys (key TEXT PRIMARY KEY NOT NULL) WITHOUT ROWID;"
                       "CREATE TABLE IF NOT EXISTS settings (key TEXT NOT NULL, name TEXT NOT NULL,"
                       " kind INTEGER NOT NULL, value, PRIMARY KEY (key, name)) WITHOUT ROWID;"
                       "PRAGMA user_version=1;"
                       "COMMIT");
    if (code != SQLITE_OK) {
        std::ignore = Execute("ROLLBACK");
        return OutcomeOf(code);
    }
    return Prepare();
}

void SettingsDatabase::Close() {
    m_memory.Clear();
    for (sqlite3_stmt *&statement : m_statements)
        sqlite3_finalize(std::exchange(statement, nullptr));
    sqlite3_close(std::exchange(m_connection, nullptr));
}

void SettingsDatabase::Abandon() {
    m_memory.Clear();
    m_connection = nullptr;
    m_statements.fill(nullptr);
}

void SettingsDatabase::SetPatience(std::chrono::milliseconds patience) {
    m_patience = patience;
    if (m_connection != nullptr)
        sqlite3_busy_timeout(m_connection, static_cast<int>(patience.count()));
}

SettingsDatabase::Outcome SettingsDatabase::Check() {
    DString answer;
    int const code = Query("PRAGMA integrity_check(1)", answer);
    return code == SQLITE_OK && answer != "ok" ? Outcome::Damaged : OutcomeOf(code);
}

void SettingsDatabase::CloseQuickly() {
    if (m_connection != nullptr)
        sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    Close();
}

bool SettingsDatabase::SetAside() {
    Close();
    DirectoryLock const lock(m_file);
    if (lock.IsTaken())
        return false;
    if (m_identity != Look())
        return true; // another process was first
    DString kept;
    for (int number = 1; kept.empty() || IsThere(kept) || IsThere(kept + "-wal"); ++number)
        kept = Format("%s.damaged-%d", m_file.c_str(), number);
    // The log goes first: should the process die in between, no new file meets an old log.
    for (char const *part : {"-wal", "-journal"})
        std::rename((m_file + part).c_str(), (kept + part).c_str());
    unlink((m_file + "-shm").c_str());
    bool const moved = std::rename(m_file.c_str(), kept.c_str()) == 0;
    if (!std::exchange(m_told, true)) {
        if (moved)
            Report::UserNotificationEnforced(
                "The settings file %s is damaged. It was kept as %s, and new settings were "
                "begun.",
                m_file.c_str(), kept.c_str());
        else
            Report::UserNotificationEnforced("The settings file %s is damaged and cannot be moved.", m_file.c_str());
    }
    return moved;
}

int SettingsDatabase::Execute(char const *sql) { return sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr); }

int SettingsDatabase::Query(char const *sql, DString &answer) {
    auto const take = [](void *target, int, char **columns, char **) {
        *static_cast<DString *>(target) = columns[0] == nullptr ? "" : columns[0];
        return 0;
    };
    return sqlite3_exec(m_connection, sql, take, &answer, nullptr);
}

SettingsDatabase::Outcome SettingsDatabase::Run(Sql sql) {
    Outcome const outcome = Statement(*this, sql).Step();
    return outcome == Outcome::Nothing ? Outcome::Done : outcome;
}

SettingsDatabase::Outcome SettingsDatabase::Begin() {
    m_madeKey.clear();
    return Run(kBegin);
}
SettingsDatabase::Outcome SettingsDatabase::BeginReading() { return Run(kBeginReading); }
SettingsDatabase::Outcome SettingsDatabase::Commit() { return Run(kCommit); }

void SettingsDatabase::Rollback() {
    // Some failures have ended the transaction already.
    if (m_connection != nullptr && sqlite3_get_autocommit(m_connection) == 0)
        std::ignore = Run(kRollback);
}

SettingsDatabase::Outcome SettingsDatabase::BeginNested() { return Run(kSavepoint); }

SettingsDatabase::Outcome SettingsDatabase::EndNested(bool keep) {
    m_madeKey.clear();
    Outcome const undone = keep ? Outcome::Done : Run(kRollbackTo);
    Outcome const released = Run(kRelease);
    return undone == Outcome::Done ? released : undone;
}

SettingsDatabase::Outcome SettingsDatabase::Read(std::string_view key, std::string_view name, Value &value) {
    std::optional<SettingsMemory::Mark> const mark = m_hasLog ? SettingsMemory::MarkOf(m_connection) : std::nullopt;
    if (mark)
        if (std::optional<Value> const *const known = m_memory.Find(*mark, key, name)) {
            if (*known)
                value = **known;
            return *known ? Outcome::Done : Outcome::Nothing;
        }
    Outcome outcome = Outcome::Nothing;
    {
        Statement statement(*this, kSelect);
        outcome = statement.Bind(key).Bind(name).Step();
        if (outcome == Outcome::Done && !statement.ReadValue(0, value))
            outcome = Outcome::Nothing;
    }
    bool const isAnswer = outcome == Outcome::Done || outcome == Outcome::Nothing;
    if (isAnswer && mark && mark == SettingsMemory::MarkOf(m_connection))
        m_memory.Keep(*mark, key, name, outcome == Outcome::Done ? std::optional(value) : std::nullopt);
    return outcome;
}

SettingsDatabase::Outcome SettingsDatabase::Write(std::string_view key, std::string_view name, Value const &value) {
    if (Outcome const made = MakeKey(key); made != Outcome::Done)
        return made;
    Outcome const outcome = Statement(*this, kUpsert).Bind(key).Bind(name).BindValue(value).Step();
    return outcome == Outcome::Nothing ? Outcome::Done : outcome;
}

SettingsDatabase::Outcome SettingsDatabase::Rewrite(std::string_view key, std::string_view name, Value const &value) {
    // The key needs no look: a row goes when its key goes.
    Outcome const outcome = Statement(*this, kUpdate).Bind(key).Bind(name).BindValue(value).Step();
    if (outcome != Outcome::Nothing)
        return outcome;
    return sqlite3_changes(m_connection) > 0 ? Outcome::Done : Outcome::Nothing;
}

SettingsDatabase::Outcome SettingsDatabase::MakeKey(std::string_view key) {
    if (key == m_madeKey)
        return Outcome::Done;
    std::string_view const whole = key;
    while (!key.empty()) {
        Outcome const found = HasKey(key);
        if (found == Outcome::Done)
            break; // and so are the keys above it
        if (found != Outcome::Nothing)
            return found;
        if (Outcome const made = Statement(*this, kInsertKey).Bind(key).Step(); made != Outcome::Nothing)
            return made;
        std::size_t const separator = key.rfind(kKeySeparator);
        key = key.substr(0, separator == std::string_view::npos ? 0 : separator);
    }
    m_madeKey = whole;
    return Outcome::Done;
}

SettingsDatabase::Outcome SettingsDatabase::HasKey(std::string_view key) {
    return key.empty() ? Outcome::Done : Statement(*this, kFindKey).Bind(key).Step();
}

SettingsDatabase::Outcome SettingsDatabase::Remove(std::string_view key, std::string_view name) {
    Outcome const outcome = Statement(*this, kDelete).Bind(key).Bind(name).Step();
    if (outcome != Outcome::Nothing)
        return outcome;
    return sqlite3_changes(m_connection) > 0 ? Outcome::Done : Outcome::Nothing;
}

SettingsDatabase::Outcome SettingsDatabase::RemoveTree(std::string_view key) {
    m_madeKey.clear();
    DString const below = Below(key);
    DString const behind = BehindBelow(key);
    for (Sql const sql : {kDeleteValues, kDeleteKeys}) {
        Outcome const outcome = Statement(*this, sql).Bind(key).Bind(below).BindEnd(behind).Step();
        if (outcome != Outcome::Nothing)
            return outcome;
    }
    return Outcome::Done;
}

SettingsDatabase::Outcome SettingsDatabase::Names(std::string_view key, std::vector<DString> &names) {
    names.clear();
    Statement statement(*this, kNames);
    statement.Bind(key);
    for (;;) {
        Outcome const outcome = statement.Step();
        if (outcome != Outcome::Done)
            return outcome == Outcome::Nothing ? Outcome::Done : outcome;
        names.push_back(statement.Text(0));
    }
}

SettingsDatabase::Outcome SettingsDatabase::Children(std::string_view key, std::vector<DString> &children) {
    DString const below = Below(key);
    DString const behind = BehindBelow(key);
    std::set<DString> found;
    // From each key on to the first that is not below the child just found: a look-up or two a child, however much
    // lies below it.
    for (DString at = below;;) {
        Statement statement(*this, kNextKey);
        Outcome const outcome = statement.Bind(at).BindEnd(behind).Step();
        if (outcome == Outcome::Nothing)
            break;
        if (outcome != Outcome::Done)
            return outcome;
        DString const next = statement.Text(0);
        std::size_t const end = next.find(kKeySeparator, below.size());
        found.insert(next.substr(below.size(), end == DString::npos ? end : end - below.size()));
        at = end == DString::npos ? next + '\0' : next.substr(0, end) + kBehindSeparator;
    }
    children.assign(found.begin(), found.end());
    return Outcome::Done;
}

} // namespace zelvar
