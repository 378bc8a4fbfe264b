#include "support/Test.h"
#include "zelvar/connections/ConnectionFields.h"
#include "zelvar/model/DataSourceRepository.h"
#include "zelvar/xml/XMLNode.h"

namespace zelvar {
namespace {

using Fields = std::map<DString, DString>;

Connection Made(ConnectionKind kind, Fields fields) { return {.name = "n", .kind = kind, .fields = std::move(fields)}; }

DString Words(Connection const &connection) {
    DString words;
    for (ConnectionFault const &fault : FaultsOf(connection))
        words += fault.field + ": " + fault.words + "\n";
    return words;
}

TEST(ConnectionFields, AreCheckedWithWordsForPeople) {
    using enum ConnectionKind;
    Fields const good{{"host", "h"}, {"database", "d"}};
    auto const with = [&](Fields more) { return more.merge(Fields(good)), more; };
    for (auto const &[kind, fields, words] : test::Rows<ConnectionKind, Fields, DString>{
             {PostgreSql, with({{"port", "65535"}, {"host", "::1"}, {"sslmode", "verify-full"}}), ""},
             {PostgreSql, {{"service", "lab"}}, ""},
             {PostgreSql, with({{"port", "0"}}), "port: The port is a number from 1 to 65535.\n"},
             {PostgreSql, with({{"port", "65536"}}), "port: The port is a number from 1 to 65535.\n"},
             {PostgreSql, with({{"port", "1x"}}), "port: The port is a number from 1 to 65535.\n"},
             {PostgreSql, with({{"host", "a b"}}), "host: The host is a name or an address, as db.lab or 10.0.0.5.\n"},
             {PostgreSql, with({{"user", "a;b"}}), "user: \";\" and \"${\" cannot be kept in this field.\n"},
             {PostgreSql, with({{"database", "${x}"}}), "database: \";\" and \"${\" cannot be kept in this field.\n"},
             {PostgreSql, with({{"user", "a\nb"}}), "user: Line ends and other control characters cannot be kept.\n"},
             {PostgreSql, with({{"tables", "x"}}), "tables: This is one of: all, geometry.\n"},
             {PostgreSql, with({{"ca", "ca.pem"}}), "ca: The file is named by its full path, from / on.\n"},
             {PostgreSql, {{"host", "h"}}, "database: A database is needed: each connection leads to one.\n"},
             {MapService, {{"address", "https://m/ows?a=b;c"}}, ""},
             {MapService,
              {{"address", "m/ows"}},
              "address: The address begins with http:// or https:// and names a server.\n"},
             {WebFolder,
              {{"address", "https://u:p@h/"}},
              "address: The address holds a password: it has a field of its own.\n"},
             {ObjectStore,
              {{"bucket", "a/b"}},
              "bucket: The name of a bucket holds letters, digits, dots, hyphens and underscores.\n"},
             {ObjectStore, {{"bucket", "b"}, {"endpoint", "http://s3.lab:9000"}}, ""},
             {ObjectStore, {}, ""},
             {ObjectStore,
              {{"prefix", "p"}},
              "prefix: A prefix is one of a bucket. Without both all buckets are listed.\n"},
             {ObjectStore,
              {{"bucket", "b"}, {"endpoint", "s3.lab:x"}},
              "endpoint: The endpoint is a host, with a port if it has one, as s3.lab:9000.\n"},
             {ObjectStore,
              {{"bucket", "b"}, {"profile", "p"}, {"key", "k"}},
              "key: Either a profile or a key ID, not both.\n"},
             {Odbc, {}, "dsn: The name of a data source is needed.\n"}})
        EXPECT_EQ(Words(Made(kind, fields)), words);
    for (auto const &[name, words] : test::Rows<DString, DString>{
             {" ", "A name is needed."}, {"\xFF", "The name holds bytes that are no text."}, {"a: ?\"}%", ""}}) {
        Connection connection = Made(Odbc, {{"dsn", "d"}});
        connection.name = name;
        EXPECT_EQ(Words(connection), words.empty() ? "" : "name: " + words + "\n");
    }
}

TEST(Connection, ComesBackFromItsDefinition) {
    using enum ConnectionKind;
    for (auto const &[kind, fields, url] : test::Rows<ConnectionKind, Fields, DString>{
             {PostgreSql,
              {{"host", "db.lab"}, {"port", "5432"}, {"database", "field"}, {"user", "zelvar"}, {"schemas", "a,b"}},
              "postgresql://zelvar@db.lab:5432/field"},
             {PostgreSql,
              {{"host", "::1"}, {"database", "a/b?\xFF"}, {"user", "a@b:}%"}},
              "postgresql://a%40b%3A%7D%25@[::1]/a%2Fb%3F%FF"},
             {PostgreSql, {{"service", "lab"}}, "postgresql+service://lab"},
             {MapService,
              {{"address", "https://m.lab/ows?map=field"}, {"service", "wms"}, {"version", "1.3.0"}},
              "wms+https://m.lab/ows?map=field"},
             {ObjectStore,
              {{"bucket", "b"}, {"prefix", "v1.2 data/"}, {"profile", "lab"}, {"region", "eu"}},
              "s3://lab@b/v1.2%20data/"},
             {ObjectStore, {{"bucket", "b"}, {"key", "AKIA"}, {"service", "gs"}}, "gs://AKIA@b/"},
             {ObjectStore, {{"profile", "lab"}, {"endpoint", "s3.lab"}}, "s3://lab@"},
             {WebFolder,
              {{"address", "https://cloud.lab/dav/"}, {"user", "ann"}, {"ca", "/a\xFF"}},
              "https://ann@cloud.lab/dav/"},
             {Odbc, {{"dsn", "labsql"}}, "odbc://labsql"}}) {
        Connection connection = Made(kind, fields);
        connection.secret = SecretPlace::Keyring;
        connection.allow = {{"cdn.lab", 443}, {"::1", 0}};
        connection.timeLimit = std::chrono::seconds(7);
        XMLNode read;
        ASSERT_TRUE(read.LoadText(connection.ToNode()->SaveText())) << url;
        EXPECT_EQ(DataSourceRepository::GetURLFromNode(&read), url);
        std::optional<Connection> const back = Connection::FromNode(read);
        ASSERT_TRUE(back) << url;
        EXPECT_EQ(back->kind, kind);
        EXPECT_EQ(back->fields, fields);
        EXPECT_EQ(back->allow, connection.allow);
        EXPECT_TRUE(back->secret == SecretPlace::Keyring && back->timeLimit == connection.timeLimit);
    }
}

TEST(Connection, AnEditKeepsWhatItDoesNotKnow) {
    XMLNode node;
    ASSERT_TRUE(node.LoadText("<DataSource name='n' url='postgresql://${user}@${host}/${db}' colour='red' "
                              "visible='0'><!-- why --><Icons><Icon type='Folder' path='a.png'/></Icons>"
                              "<Parameters>user=u;host=h;db=d;extra=e</Parameters>"
                              "<Connection secret='ask' future='f' schemas='s'><More/></Connection></DataSource>"));
    Connection connection = *Connection::FromNode(node);
    connection.fields.erase("schemas");
    connection.WriteTo(node);
    EXPECT_EQ(node.GetAttrStr("url"), "postgresql://${user}@${host}/${db}"); // leads to the same place
    connection.fields["host"] = "other";
    connection.WriteTo(node);
    EXPECT_EQ(DataSourceRepository::GetURLFromNode(&node), "postgresql://u@other/d");
    DString const text = node.SaveText();
    for (char const *kept : {"<!-- why -->", "a.png", "extra=e", "colour=\"red\"", "future=\"f\"", "<More", "visible"})
        EXPECT_THAT(text, HasSubstr(kept));
    EXPECT_EQ(Connection::FromNode(node)->Field("schemas"), "");
}

TEST(Connection, ADefinitionOfOldIsReadAndLosesItsPasswordToAnotherPlace) {
    using enum ConnectionKind;
    for (auto const &[url, parameters, kind] : test::Rows<DString, DString, ConnectionKind>{
             {"http://${user}:${password}@h/dir/", "user=u;password=MARKER", WebFolder},
             {"http://u:MARKER@h/dir/", "", WebFolder},
             {"postgresql://u@${host}/d", "host=h;PASSWORD=MARKER;x=y", PostgreSql}}) {
        XMLNode node("DataSource");
        node.SetAttr("name", "n");
        node.SetAttr("url", url);
        node.AddChld(DString("Parameters"))->SetText(parameters);
        Connection connection = *Connection::FromNode(node);
        EXPECT_EQ(connection.kind, kind);
        EXPECT_EQ(connection.Field("user"), "u");
        EXPECT_EQ(PasswordInDefinition(node), "MARKER");
        DString const before = node.SaveText();
        connection.WriteTo(node);
        EXPECT_EQ(node.SaveText(), before) << "nothing has changed";
        connection.secret = SecretPlace::Keyring;
        connection.WriteTo(node);
        EXPECT_THAT(node.SaveText(), testing::Not(HasSubstr("MARKER")));
        EXPECT_EQ(Connection::FromNode(node)->Address(), connection.Address());
    }
}

} // namespace
} // namespace zelvar
