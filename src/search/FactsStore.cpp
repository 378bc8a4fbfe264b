#include "zelvar/search/FactsStore.h"

#include "zelvar/base/PathStyle.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zelvar {

namespace {

constexpr int kVersion = 1;    // of the table
constexpr int kPatience = 200; // ms, for other programs
constexpr char kTable[] = "CREATE TABLE IF NOT EXISTS facts (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, "
                          "size INTEGER, modified INTEGER, kind INTEGER, width INTEGER, height INTEGER, channels "
                          "INTEGER, slices INTEGER, frames INTEGER, type INTEGER, format TEXT)";
constexpr char kFind[] = "SELECT size, modified, kind, width, height, channels, slices, frames, type, format FROM "
                         "facts WHERE path = ?1";
// A new number each time: the lowest ones are the oldest.
constexpr char kKeep[] = "INSERT OR REPLACE INTO facts (path, size, modified, kind, width, height, channels, slices, "
                         "frames, type, format) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)";
constexpr char kForget[] = "DELETE FROM facts WHERE id <= (SELECT min(id) + (max(id) - min(id)) / 4 FROM facts)";

bool IsDamage(int code) {
    int const kind = code & 0xFF;
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB;
}

} // namespace

class FactsStore::Database {
public:
    Database(DString file, std::int64_t most) : m_file(std::move(file)), m_most(most) {}
    ~Database() { Close(); }
    Database(Database const &) = delete;
    Database &operator=(Database const &) = delete;

    std::vector<std::optional<ItemFacts>> Find(std::span<Key const> keys) {
        std::lock_guard const lock(m_mutex);
        std::vector<std::optional<ItemFacts>> found(keys.size());
        if (!Open())
            return found;
        int code = Execute("BEGIN");
        for (std::size_t i = 0; i < keys.size() && code == SQLITE_OK; ++i)
            code = FindOne(keys[i], found[i]);
        Execute("COMMIT");
        Heed(code);
        return found;
    }
    void Keep(std::span<Known const> known) {
        std::lock_guard const lock(m_mutex);
        if (known.empty() || !Open())
            return;
        int code = Execute("BEGIN IMMEDIATE");
        for (std::size_t i = 0; i < known.size() && code == SQLITE_OK; ++i)
            code = KeepOne(known[i]);
        if (code == SQLITE_OK && Bytes() > m_most)
            code = Execute(kForget);
        if (code == SQLITE_OK)
            code = Execute("COMMIT");
        if (code != SQLITE_OK)
            Execute("ROLLBACK");
        else if (Bytes() > m_most)
            code = Execute("PRAGMA incremental_vacuum");
        Heed(code);
    }

private:
    int Execute(char const *sql) { return sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr); }
    std::int64_t Number(char const *sql) {
        std::int64_t number = 0;
        auto const take = [](void *out, int, char **values, char **) {
            *static_cast<std::int64_t *>(out) = values[0] == nullptr ? 0 : std::atoll(values[0]);
            return 0;
        };
        sqlite3_exec(m_connection, sql, take, &number, nullptr);
        return number;
    }
    std::int64_t Bytes() {
        return (Number("PRAGMA page_count") - Number("PRAGMA freelist_count")) * Number("PRAGMA page_size");
    }

    bool Open() {
        if (m_connection != nullptr)
            return true;
        if (m_isLost || m_file.empty())
            return false;
        for (int attempt = 0; attempt < 2; ++attempt) {
            int const code = Connect();
            if (code == SQLITE_OK)
                return true;
            Close();
            if (!IsDamage(code) || !SetAside())
                break;
        }
        m_isLost = true;
        return false;
    }
    int Connect() {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(DString(ParentPathOf(m_file))), ignored);
        // Names of files are nobody else's business.
        if (int const made = open(m_file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR); made >= 0)
            close(made);
        int code = sqlite3_open_v2(m_file.c_str(), &m_connection,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
        if (code != SQLITE_OK)
            return code;
        sqlite3_busy_timeout(m_connection, kPatience);
        // What is lost by a power cut is read again.
        for (char const *const pragma :
             {"PRAGMA auto_vacuum = INCREMENTAL", "PRAGMA journal_mode = TRUNCATE", "PRAGMA synchronous = OFF"})
            if (code = Execute(pragma); code != SQLITE_OK)
                return code;
        if (Number("PRAGMA user_version") != kVersion) {
            Execute("DROP TABLE IF EXISTS facts");
            DString const version = Format("PRAGMA user_version = %d", kVersion);
            if (code = Execute(version.c_str()); code != SQLITE_OK)
                return code;
        }
        if (code = Execute(kTable); code != SQLITE_OK)
            return code;
        if (code = sqlite3_prepare_v2(m_connection, kFind, -1, &m_find, nullptr); code != SQLITE_OK)
            return code;
        return sqlite3_prepare_v2(m_connection, kKeep, -1, &m_keep, nullptr);
    }
    void Close() {
        sqlite3_finalize(std::exchange(m_find, nullptr));
        sqlite3_finalize(std::exchange(m_keep, nullptr));
        sqlite3_close(std::exchange(m_connection, nullptr));
    }
    bool SetAside() {
        DString const aside = m_file + ".damaged";
        std::remove((m_file + "-journal").c_str()); // of no use to a new file
        return std::rename(m_file.c_str(), aside.c_str()) == 0;
    }
    /// A damaged file goes out of the way; what was in it is read anew.
    void Heed(int code) {
        if (!IsDamage(code))
            return;
        Close();
        m_isLost = !SetAside();
    }

    int FindOne(Key const &key, std::optional<ItemFacts> &found) {
        sqlite3_bind_blob(m_find, 1, key.path.data(), static_cast<int>(key.path.size()), SQLITE_STATIC);
        int const code = sqlite3_step(m_find);
        if (code == SQLITE_ROW && sqlite3_column_int64(m_find, 0) == key.size &&
            sqlite3_column_int64(m_find, 1) == key.modified) {
            auto const *const format = sqlite3_column_text(m_find, 9);
            found = {.kind = sqlite3_column_int(m_find, 2) == 1 ? ItemFacts::Kind::Image : ItemFacts::Kind::Nothing,
                     .width = sqlite3_column_int(m_find, 3),
                     .height = sqlite3_column_int(m_find, 4),
                     .channels = sqlite3_column_int(m_find, 5),
                     .slices = sqlite3_column_int(m_find, 6),
                     .frames = sqlite3_column_int(m_find, 7),
                     .dataType = sqlite3_column_int(m_find, 8),
                     .format = format == nullptr ? "" : reinterpret_cast<char const *>(format)};
        }
        sqlite3_reset(m_find);
        return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
    }
    int KeepOne(Known const &known) {
        auto const &[key, facts] = known;
        sqlite3_bind_blob(m_keep, 1, key.path.data(), static_cast<int>(key.path.size()), SQLITE_STATIC);
        sqlite3_bind_int64(m_keep, 2, key.size);
        sqlite3_bind_int64(m_keep, 3, key.modified);
        int at = 4;
        for (int const number : {facts.kind == ItemFacts::Kind::Image ? 1 : 0, facts.width, facts.height,
                                 facts.channels, facts.slices, facts.frames, facts.dataType})
            sqlite3_bind_int(m_keep, at++, number);
        sqlite3_bind_text(m_keep, at, facts.format.c_str(), static_cast<int>(facts.format.size()), SQLITE_STATIC);
        int const code = sqlite3_step(m_keep);
        sqlite3_reset(m_keep);
        return code == SQLITE_DONE ? SQLITE_OK : code;
    }

    DString const m_file;
    std::int64_t const m_most;
    std::mutex m_mutex; ///< guards all below
    sqlite3 *m_connection = nullptr;
    sqlite3_stmt *m_find = nullptr;
    sqlite3_stmt *m_keep = nullptr;
    bool m_isLost = false; ///< it cannot be used for the rest of this process
};

FactsStore::FactsStore(DString file, std::int64_t most)
    : m_database(std::make_unique<Database>(std::move(file), most)) {}

FactsStore::~FactsStore() = default;

DString FactsStore::UsualFile() {
    char const *const cache = std::getenv("XDG_CACHE_HOME");
    char const *const home = std::getenv("HOME");
    if (cache != nullptr && *cache == '/')
        return DString(cache) + "/zelvar/facts.db";
    return home == nullptr || *home != '/' ? DString() : DString(home) + "/.cache/zelvar/facts.db";
}

std::vector<std::optional<ItemFacts>> FactsStore::Find(std::span<Key const> keys) { return m_database->Find(keys); }

void FactsStore::Keep(std::span<Known const> known) { m_database->Keep(known); }

} // namespace zelvar
