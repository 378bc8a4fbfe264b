// A database on the loopback interface: its tables listed through a reader beside one plain query by libpq, and the
// first preview of a raster in it beside the whole process that brings the same to that size.
#include "Processes.h"
#include "reader/Drivers.h"
#include "support/PostgresServer.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ImageReader.h"

#include <memory>

#include <libpq-fe.h>

namespace zelvar::bench {
namespace {

constexpr char kAddress[] = "postgresql://zelvar@db.lab/field";

/// A server with what a statement makes, and readers that find a connection to it.
class Database {
public:
    explicit Database(std::string const &statements) {
        std::string told = m_server.Start();
        told += told.empty() ? m_server.Execute(statements) : "";
        if (!told.empty())
            Fail(told);
        ConnectionTerms terms{.id = kAddress, .kind = ConnectionKind::PostgreSql};
        terms.hosts = {{"127.0.0.1", static_cast<std::uint16_t>(m_server.Port())}};
        terms.options = {{"host", "127.0.0.1"},
                         {"port", std::to_string(m_server.Port())},
                         {"database", "field"},
                         {"user", m_server.kUser}};
        terms.secrets = {{"password", m_server.kPassword}};
        SetConnectionFinder([terms](std::string_view) { return terms; });
        Use(Way::Reader);
    }
    ~Database() {
        EndReaders();
        SetConnectionFinder(nullptr);
    }
    Database(Database const &) = delete;
    Database &operator=(Database const &) = delete;
    [[nodiscard]] test::PostgresServer const &Server() const { return m_server; }
    /// What other programs connect by.
    [[nodiscard]] std::string Login() const {
        return "host=127.0.0.1 port=" + std::to_string(m_server.Port()) + " dbname=field user=zelvar";
    }

private:
    test::PostgresServer m_server;
};

std::size_t CountChildren(BDIDrvr &driver, void *tree, BDINode const &parent, std::vector<BDINode> *children) {
    std::size_t count = 0;
    void *const walk = driver.FindFirstChildNode(tree, &parent, 0xFF);
    while (BDINode const *const child = walk == nullptr ? nullptr : driver.FindNextChildNode(walk)) {
        ++count;
        if (children != nullptr)
            children->push_back(*child);
    }
    driver.FindClose(walk);
    return count;
}

void ListAll(std::size_t expected) {
    BDIDrvr *const driver = BDIDrvrMngr::Instance()->GetDrvr("PostgreSQL");
    BDINode *root = nullptr;
    void *const tree = driver == nullptr ? nullptr : driver->OpenRepository(kAddress, &root, nullptr);
    if (tree == nullptr)
        Fail("the database does not open");
    std::vector<BDINode> schemas;
    CountChildren(*driver, tree, *root, &schemas);
    std::size_t tables = 0;
    for (BDINode const &schema : schemas)
        tables += CountChildren(*driver, tree, schema, nullptr);
    if (tables != expected)
        Fail("the database has other tables");
    driver->CloseNode(root);
    driver->CloseRepository(tree);
}

Register const kList("database.list", [] {
    constexpr int kTables = 5000;
    Database const database(
        "do $$ begin for s in 1..200 loop execute format('create schema s%s', s); for t in 1..25 loop"
        " execute format('create table s%s.t%s (id int primary key, name text, g geometry)', s, t);"
        " end loop; commit; end loop; end $$; analyze pg_class");
    std::string const login = database.Login() + " password='" + "MARKER:7\\\\%41 pw'";
    std::unique_ptr<PGconn, decltype(&PQfinish)> const plain(PQconnectdb(login.c_str()), &PQfinish);
    if (PQstatus(plain.get()) != CONNECTION_OK)
        Fail(PQerrorMessage(plain.get()));
    constexpr char query[] = "select n.nspname, c.relname, c.relkind from pg_class c join pg_namespace n on"
                             " n.oid = c.relnamespace where c.relkind in ('r', 'v', 'm', 'f', 'p') order by 1, 2";
    ListAll(kTables); // the reader is up
    Pair const pair = Compare(
        9, [] { ListAll(kTables); },
        [&] {
            std::unique_ptr<PGresult, decltype(&PQclear)> const rows(PQexec(plain.get(), query), &PQclear);
            if (PQntuples(rows.get()) < kTables)
                Fail("the database has fewer tables");
        });
    Figure("database.list", pair.firstMs, "ms",
           {.limit = 300,
            .alternatives = {{"libpq, names alone", pair.secondMs}},
            .note = "5,000 tables in 200 schemas with kinds, places, rows and rights, median of 9"});
});

Register const kPreview("database.preview", [] {
    Database const database("create schema images");
    test::TempFolder const folder;
    std::string const made = database.Server().Execute(
        "create table images.height as select n rid, st_addband(st_makeemptyraster(256, 256, 256 * (n % 16),"
        " -256 * (n / 16), 1, -1, 0, 0, 4326), '16BUI'::text, n, 0) rast from generate_series(0, 255) n;"
        "create index on images.height using gist (st_convexhull(rast));"
        "select addrasterconstraints('images'::name, 'height'::name, 'rast'::name);"
        "select st_createoverview('images.height'::regclass, 'rast', 2), st_createoverview('images.height'::regclass,"
        " 'rast', 4)");
    if (made.find("ERROR") != std::string::npos)
        Fail(made);
    std::string const address = std::string(kAddress) + "/images/height?COLUMN=rast";
    auto const preview = [&] {
        EndReaders();
        DCanvas canvas;
        if (!ReadPreview({address, nullptr}, "", nullptr, canvas))
            Fail("no preview");
    };
    std::vector<double> ours;
    std::vector<Alternative> const others =
        TimesBeside(5, [&] { ours.push_back(Ms(preview)); },
                    {{.name = "gdal_translate",
                      .words = {"env", std::string("PGPASSWORD=") + test::PostgresServer::kPassword, "gdal_translate",
                                "-q", "-outsize", "1024", "1024",
                                "PG:" + database.Login() + " schema='images' table='height' column='rast' mode='2'",
                                folder / "out.tif"}}});
    Figure("database.preview", Median(ours), "ms",
           {.alternatives = others,
            .note = "4096 x 4096 samples of 16 bits with overviews, no reader running, median of 5"});
});

} // namespace
} // namespace zelvar::bench
