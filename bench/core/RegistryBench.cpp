#include "Harness.h"
#include "zelvar/base/DFile.h"
#include "zelvar/settings/ZelRegistry.h"
#include "zelvar/xml/XMLNode.h"

#include <cstdlib>
#include <filesystem>
#include <memory>

#include <sqlite3.h>

namespace {

using namespace zelvar;

constexpr int kValues = 10'000;

DString KeyOf(int i) { return "Section" + std::to_string(i / 100) + "\\Window" + std::to_string(i / 10); }

/// The same rows in one transaction of the database by itself, in a file with the same table.
void PlainTransaction(DString const &file) {
    std::filesystem::remove(file);
    sqlite3 *connection = nullptr;
    sqlite3_stmt *insert = nullptr;
    sqlite3_open(file.c_str(), &connection);
    sqlite3_exec(connection,
                 "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
                 "CREATE TABLE settings (key TEXT NOT NULL, name TEXT NOT NULL, kind INTEGER NOT NULL, value,"
                 " PRIMARY KEY (key, name)) WITHOUT ROWID; BEGIN IMMEDIATE",
                 nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(connection, "INSERT INTO settings VALUES (?1, ?2, 2, ?3)", -1, &insert, nullptr);
    for (int i = 0; i < kValues; ++i) {
        DString const key = KeyOf(i);
        DString const name = "value" + std::to_string(i);
        sqlite3_bind_text(insert, 1, key.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 2, name.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 3, "a text of a setting", -1, SQLITE_STATIC);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_exec(connection, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_finalize(insert);
    sqlite3_close(connection);
}

// A snapshot of 10,000 values to a file and back into an empty store.
bench::Register const registry("registry", [] {
    std::string folder = (std::filesystem::temp_directory_path() / "zelvar-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return;
    {
        SettingsStore from(folder + "/from.db");
        from.Transact([&] {
            for (int i = 0; i < kValues; ++i)
                from.Write(KeyOf(i), "value" + std::to_string(i), DString("a text of a setting"));
            return true;
        });
        DFile const file(folder + "/snapshot.xml");
        auto const plain = [&] { PlainTransaction(folder + "/plain.db"); };
        auto const exported = bench::Compare(
            7,
            [&] {
                ZelRegistry reading(from, 0, 1);
                reading.Open("");
                std::unique_ptr<XMLNode> const tree(reading.ToXMLNode());
                tree->Save(&file, false);
            },
            plain);
        bench::Figure("registry.export_10000", exported.ratio, "x", {.limit = 2, .note = "of one plain transaction"});
        bench::Figure("registry.export_10000_ms", exported.firstMs, "ms",
                      {.alternatives = {{"one plain transaction", exported.secondMs}}});
        int number = 0;
        auto const imported = bench::Compare(
            7,
            [&] {
                SettingsStore to(folder + "/to" + std::to_string(++number) + ".db");
                XMLNode tree;
                tree.Load(file);
                ZelRegistry writing(to, 0, 0);
                to.Transact([&] { return ZelRegistry::IsSnapshot(tree, nullptr) && writing.FromXMLNode(&tree); });
            },
            plain);
        bench::Figure("registry.import_10000", imported.ratio, "x", {.limit = 2, .note = "of one plain transaction"});
        bench::Figure("registry.import_10000_ms", imported.firstMs, "ms",
                      {.alternatives = {{"one plain transaction", imported.secondMs}}});
    }
    std::filesystem::remove_all(folder);
});

} // namespace
