#include "support/ImageFiles.h"
#include "support/OpenedImage.h"
#include "support/OpenedTree.h"
#include "support/PostgresServer.h"
#include "support/TablesTest.h"
#include "zelvar/data/Connection.h"
#include "zelvar/data/ServerCertificate.h"
#include "zelvar/data/reader/DriverModule.h"

namespace zelvar {
namespace {

using test::OpenedImage;
using test::OpenedTree;
using test::TablesTest;
using test::WhyNotOpened;

/// A database of a test's own, and readers that find a connection to it.
struct Database : test::TablesTest {
    void SetUp() override {
        ASSERT_EQ(m_server.Start(m_encryption), "");
        test::UseReaders(test::PatientReaders());
        Connect({});
    }
    ~Database() override { SetConnectionFinder(nullptr); }
    void Connect(std::map<DString, DString> const &others, DString const &password = test::PostgresServer::kPassword) {
        ConnectionTerms terms{.id = m_address, .kind = ConnectionKind::PostgreSql};
        terms.options = {{"host", "127.0.0.1"}, {"database", "field"}, {"user", "zelvar"}};
        for (auto const &[key, value] : others)
            terms.options[key] = value;
        terms.options.try_emplace("port", std::to_string(m_server.Port()));
        terms.hosts = {{terms.options["host"], static_cast<std::uint16_t>(std::stoi(terms.options["port"]))}};
        if (!password.empty())
            terms.secrets["password"] = password;
        SetConnectionFinder([terms](std::string_view) { return terms; });
    }
    void Run(std::string const &statements) const { ASSERT_EQ(m_server.Execute(statements), ""); }

    test::PostgresServer m_server;
    test::PostgresServer::Encryption m_encryption = test::PostgresServer::Encryption::None;
    DString m_address = "postgresql://zelvar@db.lab/field";
};

TEST_F(Database, IsListedByThreeStatementsHoweverManyTablesThereAre) {
    Run("do $$ begin for s in 1..30 loop execute format('create schema s%s', s); for t in 1..20 loop"
        " execute format('create table s%s.t%s (a int)', s, t); end loop; end loop; end $$;"
        "create role guest login password 'x'; create schema closed; create table closed.t (a int);"
        "create table s1.places (a int, g geometry); create view s1.seen as select 1 a; analyze s1.t1");
    std::ignore = m_server.TakeStatements();
    OpenedTree const tree(m_address, "PostgreSQL");
    ASSERT_TRUE(tree);
    std::size_t tables = 0;
    std::vector<BDINode> const schemas = tree.Children(*tree.root);
    for (BDINode const &schema : schemas)
        tables += tree.Children(schema).size();
    EXPECT_EQ(schemas.size(), 31U); // "public" has none but those of PostGIS
    EXPECT_EQ(tables, 30U * 20 + 3);
    EXPECT_EQ(m_server.TakeStatements().size(), 3U);
    // Who asks again sees how it is now.
    Run("create table s2.later (a int)");
    BDINode const second = *tree.Node(m_address + "/s2");
    EXPECT_EQ(tree.Children(second).size(), 21U);
    auto const names = tree.Names(*tree.Node(m_address + "/s1"));
    EXPECT_EQ(names.at("places"), BDINode_Thematic | BDINode_Table);
    EXPECT_EQ(names.at("seen"), BDINode_Table);
    EXPECT_EQ(tree.Node(m_address + "/s1/t1")->value, "table, about 0 rows");
    Connect({{"schemas", "s1, s3"}, {"tables", "geometry"}});
    OpenedTree const part(m_address, "PostgreSQL");
    EXPECT_EQ(part.Names(*part.root).size(), 2U);
    EXPECT_THAT(part.Names(*part.Node(m_address + "/s1")), ElementsAre(testing::Key("places")));
}

TEST_F(Database, NamesOfAnyKindComeBack) {
    for (DString const &name : {DString(R"(a: "b"? 50% } 'c'; d.e/f\g)"), DString("Größe 1"), DString(".."),
                                DString("a?COLUMN=b&c#d"), DString("x%41@y:z")}) {
        DString doubled;
        for (char const c : name)
            doubled.append(c == '"' ? 2 : 1, c);
        DString const quoted = "\"" + doubled + "\"";
        Run("create schema " + quoted + "; create table " + quoted + "." + quoted + " (" + quoted +
            " text); insert into " + quoted + "." + quoted + " values ('here')");
        OpenedTree const tree(m_address, "PostgreSQL");
        std::vector<BDINode> const schemas = tree.Children(*tree.root);
        auto const schema = std::ranges::find(schemas, name, &BDINode::name);
        ASSERT_NE(schema, schemas.end()) << name;
        std::vector<BDINode> const tables = tree.Children(*schema);
        ASSERT_EQ(tables.size(), 1U);
        EXPECT_EQ(tables.front().name, name);
        EXPECT_EQ(OpenedTree(tables.front().path).root->name, name);
        EXPECT_THAT(Read(tables.front().path), ElementsAre(name + ":" + std::to_string(ADICol_String), "here"));
        EXPECT_EQ(BDIMoniker(tables.front().path, nullptr).GetDisplayName(), name);
    }
}

TEST_F(Database, TablesAreWhatTheirFilesHold) {
    DString csv = "num,part,word\n";
    for (int row = 0; row < 12'000; ++row)
        csv += std::to_string(row) + "," + std::to_string(row) + ".25,w" + std::to_string(row % 7) + "\n";
    std::string const file = m_folder / "plots.dbf";
    test::ConvertTable(m_folder.Write("plots.csv", csv), file, "ESRI Shapefile");
    Run("create schema survey");
    ASSERT_EQ(m_server.Load("shp2pgsql -n -W UTF-8 " + file + " survey.plots"), "");
    ADIFile source = Open(file);
    ADIFile table = Open(m_address + "/survey/plots");
    ASSERT_EQ(table.GetNumCols(), 4); // with a key of its own
    int row = 0;
    for (; source.SetRow(row); ++row) {
        ASSERT_TRUE(table.SetRow(row)) << row;
        EXPECT_EQ(table.GetText(0), std::to_string(row + 1));
        for (int col = 0; col < 2; ++col)
            EXPECT_EQ(std::stod(table.GetText(col + 1)), std::stod(source.GetText(col)));
        EXPECT_EQ(table.GetText(3), source.GetText(2));
    }
    EXPECT_EQ(row, 12'000);
    EXPECT_FALSE(table.SetRow(row));
    EXPECT_FALSE(table.HasFailed());
    ASSERT_TRUE(table.SetRow(17)); // back
    EXPECT_EQ(table.GetText(0), "18");

    Run("create domain mark as int; create table survey.types (z float8, k int primary key, b bool, i int8, n numeric,"
        " d mark, t timestamp, x bytea, l text[], g geometry, e text); insert into survey.types values"
        " (0.1, 2, true, 9007199254740993, 1.50, 7, '2020-02-01 03:04:05', '\\x00ff', '{a,b}', null, E'a\\tb'),"
        " ('NaN', 1, false, null, null, null, null, null, null, null, '')");
    EXPECT_THAT(Read(m_address + "/survey/types"),
                ElementsAre(HasSubstr("z:" + std::to_string(ADICol_Double) + "|k:" + std::to_string(ADICol_Int)),
                            "NaN|1|0|||||||",
                            "0.1|2|1|9007199254740993|1.50|7|2020-02-01 03:04:05|\\x00ff|{a,b}|a\tb"));
}

TEST_F(Database, RastersAreWhatTheirFilesHold) {
    test::ImageSpec const spec{
        .width = 330, .height = 210, .channels = 2, .type = GDT_Int16, .sample = [](int channel, int x, int y) {
            return x % 11 == 0 ? -7.0 : x + 3 * y - 400 * channel;
        }};
    DString const file = m_folder / "height.tif";
    test::WriteImage(file, spec);
    Run("create schema images; create table images.\"o'd\" (rast raster)");
    ASSERT_EQ(m_server.Load("raster2pgsql -q -s 4326 -I -C -M -N -7 -l 2,4 -t 100x100 " + file + " images.height"), "");
    DString const address = m_address + "/images/height?COLUMN=rast";
    OpenedTree const tree(m_address + "/images", "PostgreSQL");
    std::vector<BDINode> const nodes = tree.Children(*tree.root);
    ASSERT_EQ(nodes.size(), 2U); // its overviews are no images of their own
    EXPECT_EQ(nodes[0].path, address);
    EXPECT_EQ(nodes[0].type, BDINode_Raster);
    EXPECT_EQ(nodes[0].value, "raster");
    EXPECT_THAT(nodes[1].value, HasSubstr("cannot be read")) << nodes[1].path;
    EXPECT_THAT(OpenedImage(nodes[1].path).error.Text(), HasSubstr("cannot be read"));

    OpenedImage const stored(file);
    for (DString const &name : {address, m_address + "/images/height"}) {
        OpenedImage const image(name);
        ASSERT_TRUE(image) << image.error.Text();
        ASSERT_EQ(image.driver->GetNumChnl(image.handle), 2);
        EXPECT_EQ(image.driver->GetChnlDataType(image.handle, 0), RDI_Int16);
        EXPECT_EQ(image.driver->GetAttrString("RDI_Drvr_NoData", image.handle, 0), "-7");
        EXPECT_EQ(image.driver->GetAttrInt("RDI_Drvr_Sppt_Intrnl_RslPrmd", image.handle, 0), 1);
        for (int channel = 0; channel < 2; ++channel)
            EXPECT_EQ(image.Read<std::int16_t>(0, 0, 330, 210, 330, 210, RDIDriver::AsStored, channel),
                      stored.Read<std::int16_t>(0, 0, 330, 210, 330, 210, RDIDriver::AsStored, channel));
        EXPECT_EQ(image.Read<std::int16_t>(0, 0, 330, 210, 33, 21, RDIDriver::Cubic).size(), 33U * 21);
    }
    Run("create schema far; create table far.apart (rid serial primary key, rast raster); insert into far.apart (rast)"
        " select st_addband(st_makeemptyraster(9, 9, x, 0, 1e-300, -1e-300, 0, 0, 4326), '8BUI'::text)"
        " from unnest(array[0, 1e300]) x");
    EXPECT_THAT(OpenedImage(m_address + "/far/apart").error.Text(), HasSubstr("no size"));
}

TEST_F(Database, AFailureSaysItsCause) {
    using enum DError::Cause;
    Run("create schema s; create table s.t (a int); create role guest login password 'guest';"
        "grant usage on schema s to guest; create function s.write() returns int language sql as"
        " 'insert into s.t values (1) returning a'; create view s.writes as select s.write() a");
    DString const own = test::PostgresServer::kPassword;
    for (auto const &[options, password, place, cause, words] :
         test::Rows<std::map<DString, DString>, DString, DString, DError::Cause, DString>{
             {{}, "wrong", "", NotPermitted, "password authentication failed for user \"zelvar\""},
             {{}, "", "", NeedsPassword, "no password supplied"},
             {{{"database", "nope"}}, own, "", Missing, "database \"nope\" does not exist; there are field, postgres"},
             {{{"port", "1"}}, own, "", NoAnswer, "127.0.0.1:1 refuses connections"},
             {{{"sslmode", "require"}}, own, "", Server, "does not support SSL"},
             {{}, own, "/none", Missing, "there is no schema none"},
             {{}, own, "/s/none", Missing, "there is no table s.none"},
             {{}, own, "/s/t?COLUMN=r", Missing, "no such raster"},
             {{}, own, "/s/t/more", Missing, "names nothing in"},
             {{{"user", "guest"}}, "guest", "/s/t", NotPermitted, "may not read the table s.t"}}) {
        Connect(options, password);
        DError const error = WhyNotOpened(m_address + place);
        EXPECT_EQ(error.Why(), cause) << error.Text();
        EXPECT_THAT(error.Text(), HasSubstr(words));
    }
    Connect({});
    EXPECT_THAT(OpenedImage(m_address + "/s/t").error.Text(), HasSubstr("holds no raster"));
    // The session only reads, whatever a view does.
    ADIFile writes = Open(m_address + "/s/writes");
    EXPECT_FALSE(writes.SetRow(0));
    EXPECT_TRUE(writes.HasFailed());
    EXPECT_EQ(m_server.Execute("select count(*) from s.t"), "0\n");
    SetConnectionFinder([](std::string_view) { return ConnectionTerms{.id = "x", .missing = "No connection."}; });
    EXPECT_EQ(WhyNotOpened(m_address).Why(), NoConnection);
}

TEST_F(Database, AServerThatGoesAwayIsNoEndOfATable) {
    Run("create schema s; create table s.t as select n, repeat('x', 900) t from generate_series(1, 30000) n");
    ADIFile table = Open(m_address + "/s/t");
    ASSERT_TRUE(table.SetRow(0));
    m_server.Stop();
    int row = 0;
    while (table.SetRow(row))
        ++row;
    EXPECT_LT(row, 30'000);
    EXPECT_TRUE(table.HasFailed());
    ASSERT_TRUE(m_server.StartAgain());
    for (; table.SetRow(row); ++row)
        ASSERT_EQ(table.GetText(0), std::to_string(row + 1));
    EXPECT_EQ(row, 30'000);
    EXPECT_TRUE(OpenedTree(m_address, "PostgreSQL"));
}

struct EncryptedDatabase : Database {
    EncryptedDatabase() { m_encryption = test::PostgresServer::Encryption::Required; }
};

TEST_F(EncryptedDatabase, TheCertificateIsCheckedThroughTheApplicationsSocket) {
    Run("create schema s; create view s.v as select ssl from pg_stat_ssl where pid = pg_backend_pid()");
    Connect({{"host", "localhost"}, {"sslmode", "verify-full"}, {"ca", m_server.Authority()}});
    EXPECT_THAT(Read(m_address + "/s/v"), ElementsAre("ssl:" + std::to_string(ADICol_Int), "1"));
    Connect({{"sslmode", "verify-full"}, {"ca", m_server.Authority()}}); // it is no certificate of 127.0.0.1
    EXPECT_EQ(WhyNotOpened(m_address).Why(), DError::Cause::Untrusted);
}

TEST_F(EncryptedDatabase, ACertificateThatWasAcceptedIsTrustedAndNoOther) {
    Run("create schema s; create view s.v as select ssl from pg_stat_ssl where pid = pg_backend_pid()");
    std::map<DString, DString> options{{"sslmode", "verify-ca"},
                                       {"server", "127.0.0.1:" + std::to_string(m_server.Port())}};
    Connect(options);
    EXPECT_EQ(WhyNotOpened(m_address).Why(), DError::Cause::Untrusted);
    std::optional<ServerCertificate> const shown = ReadServerCertificate(m_address);
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->issuer, "Lab CA");
    EXPECT_TRUE(shown->fault == ServerCertificate::Fault::None) << "names are not looked at";
    options["fingerprint"] = shown->fingerprint;
    Connect(options);
    EXPECT_THAT(Read(m_address + "/s/v"), ElementsAre("ssl:" + std::to_string(ADICol_Int), "1"));
    options["sslmode"] = "verify-full";
    Connect(options);
    EXPECT_EQ(WhyNotOpened(m_address).Why(), DError::Cause::Untrusted) << "here they are";
    options["sslmode"] = "verify-ca";
    options["fingerprint"] = FingerprintOf(DString(32, 'x'));
    Connect(options);
    EXPECT_THAT(WhyNotOpened(m_address).Text(), HasSubstr("is not the one that was accepted"));
}

TEST_F(TablesTest, AnOdbcSourceIsListedAndRead) {
    test::UseReaders(test::PatientReaders());
    DString const file = m_folder / "lab.sqlite";
    test::ConvertTable(m_folder.Write("plots.csv", "num,part,word\n1,2.5,a\n2,,b\n"), file, "SQLite");
    auto const connect = [](DString const &source, DString const &driver, DString const &database) {
        SetConnectionFinder([=](std::string_view) {
            return ConnectionTerms{.id = "odbc://" + source,
                                   .kind = ConnectionKind::Odbc,
                                   .options = {{"dsn", source}, {"odbc.Driver", driver}, {"odbc.Database", database}}};
        });
    };
    connect("Lab", "SQLite3", file);
    OpenedTree const tree("odbc://Lab", "ODBC");
    ASSERT_TRUE(tree);
    std::vector<BDINode> const tables = tree.Children(*tree.root);
    auto const plots = std::ranges::find(tables, "t", &BDINode::name);
    ASSERT_NE(plots, tables.end());
    EXPECT_EQ(plots->path, "odbc://Lab/t");
    std::vector<DString> const rows = Read(plots->path);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows[1], testing::EndsWith("|1|2.5|a"));
    EXPECT_THAT(rows[2], testing::EndsWith("|2||b"));
    connect("None", "", "");
    EXPECT_EQ(WhyNotOpened("odbc://None").Why(), DError::Cause::Missing);
    SetConnectionFinder(nullptr);
}

} // namespace
} // namespace zelvar
