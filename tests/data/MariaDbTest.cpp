#include "support/MariaServer.h"
#include "support/OpenedTree.h"
#include "support/SecretWatch.h"
#include "support/TablesTest.h"
#include "zelvar/data/Connection.h"

namespace zelvar {
namespace {

using test::MariaServer;
using test::PathsIn;
using test::WhyNotOpened;
using testing::ElementsAre;

constexpr char const *kPlace = "odbc://zelvar@lab";

/// A MariaDB server behind an ODBC driver, and readers that find a connection to it.
struct MariaDb : test::TablesTest {
    void SetUp() override {
        ASSERT_EQ(m_server.Start(R"(set names utf8mb4;
create database field;
create database other;
create table other.t (a int);
create table field.plots (id int primary key, part double, word varchar(50), raw blob, day date, amount decimal(12,3), big bigint unsigned, flag bit(1));
insert into field.plots values (1,2.5,'a',x'00ff41','2024-01-02',1.500,18446744073709551615,1);
insert into field.plots values (2,null,'b "'';\\ ä€😀',null,null,-0.001,0,0);
create table field.`odd "n``ame' ä` (a int);
insert into field.`odd "n``ame' ä` values (7);
create sql security invoker view field.seen as select id from field.plots;
create table field.many (id int primary key, w varchar(5000));
insert into field.many select seq, repeat(char(97 + seq % 26), seq % 5000) from other.seq_1_to_3000;
create table field.full (w varchar(3), k bigint primary key);
insert into field.full select 'x', cast(seq as signed) - 1000 from other.seq_0_to_3999;
create table field.words (w char(5) primary key) select lpad(seq, 5, '0') w from other.seq_0_to_2999;
grant select on field.* to 'zelvar'@'127.0.0.1';
grant select on other.* to 'zelvar'@'127.0.0.1';
)"),
                  "");
        test::UseReaders(test::PatientReaders());
        Connect({});
    }
    ~MariaDb() override { SetConnectionFinder(nullptr); }
    void Connect(std::map<DString, DString> const &others, DString const &password = MariaServer::kPassword) {
        ConnectionTerms terms{.id = kPlace,
                              .kind = ConnectionKind::Odbc,
                              .hosts = {{"127.0.0.1", static_cast<std::uint16_t>(m_server.Port())}},
                              .options = {{"dsn", "lab"},
                                          {"user", MariaServer::kUser},
                                          {"odbc.Driver", "MariaDB Unicode"},
                                          {"odbc.Server", "127.0.0.1"},
                                          {"odbc.Port", std::to_string(m_server.Port())}},
                              .secrets = {{"password", password}}};
        for (auto const &[key, value] : others)
            terms.options[key] = value;
        SetConnectionFinder([terms](std::string_view) { return terms; });
    }
    MariaServer m_server;
    test::SecretWatch m_watch{{MariaServer::kPassword}};
};

TEST_F(MariaDb, ItsDatabasesAreFoldersOfTablesWhoseRowsAreThoseThatWereStored) {
    EXPECT_THAT(PathsIn(kPlace, "ODBC"), ElementsAre("odbc://zelvar@lab/field", "odbc://zelvar@lab/other"));
    DString const odd = "odbc://zelvar@lab/field/odd%20%22n%60ame%27%20%C3%A4";
    EXPECT_THAT(PathsIn("odbc://zelvar@lab/field", "ODBC"),
                ElementsAre("odbc://zelvar@lab/field/full table", "odbc://zelvar@lab/field/many table", odd + " table",
                            "odbc://zelvar@lab/field/plots table", "odbc://zelvar@lab/field/seen view",
                            "odbc://zelvar@lab/field/words table"));
    EXPECT_THAT(Read("odbc://zelvar@lab/field/plots"),
                ElementsAre("id:1|part:2|word:3|raw:3|day:3|amount:2|big:1|flag:1",
                            "1|2.5|a|00ff41|2024-01-02|1.500|18446744073709551615|1", "2||b \"';\\ ä€😀|||-0.001|0|0"));
    EXPECT_THAT(Read("odbc://zelvar@lab/field/seen"), ElementsAre("id:1", "1", "2"));
    EXPECT_THAT(Read(odd), ElementsAre("a:1", "7"));
    std::vector<DString> const many = Read("odbc://zelvar@lab/field/many");
    ASSERT_EQ(many.size(), 3001U);
    for (int i = 1; i <= 3000; ++i)
        ASSERT_EQ(many[static_cast<std::size_t>(i)],
                  std::to_string(i) + "|" + DString(static_cast<std::size_t>(i), static_cast<char>('a' + i % 26)));
    EXPECT_EQ(Read("odbc://zelvar@lab/field/full").size(), 4001U); // whole pages
    EXPECT_EQ(Read("odbc://zelvar@lab/field/words").size(), 3001U);
    ADIFile there = Open("odbc://zelvar@lab/field/full");
    for (int const row : {3999, 2500, 1999, 2000, 0})
        EXPECT_TRUE(there.SetRow(row) && there.GetText(1) == std::to_string(row - 1000)) << row;
    Connect({{"odbc.Database", "field"}});
    EXPECT_THAT(PathsIn(kPlace, "ODBC"), ElementsAre("odbc://zelvar@lab/field"));
    Connect({{"schemas", "other"}});
    EXPECT_THAT(PathsIn(kPlace, "ODBC"), ElementsAre("odbc://zelvar@lab/other"));
    // What keeps from it.
    using enum DError::Cause;
    Connect({}, "wrong");
    EXPECT_EQ(WhyNotOpened(kPlace).Why(), NotPermitted) << WhyNotOpened(kPlace).Text();
    Connect({}, "");
    EXPECT_EQ(WhyNotOpened(kPlace).Why(), NeedsPassword) << WhyNotOpened(kPlace).Text();
    Connect({{"odbc.Port", "1"}});
    EXPECT_EQ(WhyNotOpened(kPlace).Why(), Refused) << WhyNotOpened(kPlace).Text(); // no host of the connection
    Connect({{"odbc.Driver", "No Such Driver"}});
    EXPECT_EQ(WhyNotOpened(kPlace).Why(), NotSupported) << WhyNotOpened(kPlace).Text();
    Connect({});
    ADIFile const gone = Open("odbc://zelvar@lab/field/gone");
    EXPECT_NE(gone.GetError().find("gone"), DString::npos) << gone.GetError();
}

} // namespace
} // namespace zelvar
