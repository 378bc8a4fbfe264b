#include "Harness.h"
#include "zelvar/store/SettingsStore.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <sqlite3.h>

namespace {

using namespace zelvar;

constexpr int kKeys = 1'000;

DString KeyOf(int number) { return "Section" + std::to_string(number % 100) + "\\Key" + std::to_string(number); }

/// The same rows by the database alone, statements prepared, each a transaction of its own.
class PlainDatabase {
public:
    explicit PlainDatabase(DString const &file) {
        sqlite3_open(file.c_str(), &m_connection);
        sqlite3_exec(m_connection,
                     "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
                     "CREATE TABLE settings (key TEXT NOT NULL, name TEXT NOT NULL, kind INTEGER NOT NULL, value,"
                     " PRIMARY KEY (key, name)) WITHOUT ROWID",
                     nullptr, nullptr, nullptr);
        sqlite3_prepare_v2(m_connection, "INSERT OR REPLACE INTO settings VALUES (?1, 'value', 1, ?2)", -1, &m_insert,
                           nullptr);
        sqlite3_prepare_v2(m_connection, "SELECT value FROM settings WHERE key = ?1 AND name = 'value'", -1, &m_select,
                           nullptr);
    }
    ~PlainDatabase() {
        sqlite3_finalize(m_insert);
        sqlite3_finalize(m_select);
        sqlite3_close(m_connection);
    }
    PlainDatabase(PlainDatabase const &) = delete;
    PlainDatabase &operator=(PlainDatabase const &) = delete;
    void Write(DString const &key, std::int64_t value) {
        sqlite3_bind_text(m_insert, 1, key.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_int64(m_insert, 2, value);
        sqlite3_step(m_insert);
        sqlite3_reset(m_insert);
    }
    std::int64_t Read(DString const &key) {
        sqlite3_bind_text(m_select, 1, key.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_step(m_select);
        std::int64_t const value = sqlite3_column_int64(m_select, 0);
        sqlite3_reset(m_select);
        return value;
    }

private:
    sqlite3 *m_connection = nullptr;
    sqlite3_stmt *m_insert = nullptr;
    sqlite3_stmt *m_select = nullptr;
};

// Values one by one, each safe from a kill as soon as the call returns.
bench::Register const settings("settings", [] {
    std::string folder = (std::filesystem::temp_directory_path() / "zelvar-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return;
    {
        SettingsStore store(folder + "/settings.db");
        PlainDatabase plain(folder + "/plain.db");
        std::int64_t value = 0;
        auto const each = [](auto const &work) {
            for (int i = 0; i < kKeys; ++i)
                work(KeyOf(i));
        };
        bench::Pair const written = bench::Compare(
            9, [&] { each([&](DString const &key) { store.Write(key, "value", ++value); }); },
            [&] { each([&](DString const &key) { plain.Write(key, ++value); }); });
        bench::Figure("settings.write", written.firstMs * 1e3 / kKeys, "us",
                      {.limit = 13,
                       .alternatives = {{"SQLite alone", written.secondMs * 1e3 / kKeys}},
                       .note = "one of 1,000 keys"});
        std::int64_t volatile keep = 0;
        bench::Pair const read = bench::Compare(
            9, [&] { each([&](DString const &key) { keep = keep + store.ReadInt(key, "value", 0); }); },
            [&] { each([&](DString const &key) { keep = keep + plain.Read(key); }); });
        bench::Figure(
            "settings.read", read.firstMs * 1e3 / kKeys, "us",
            {.limit = 3, .alternatives = {{"SQLite alone", read.secondMs * 1e3 / kKeys}}, .note = "one of 1,000 keys"});
    }
    std::filesystem::remove_all(folder);
});

} // namespace
