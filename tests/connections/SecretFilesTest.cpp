#include "zelvar/connections/SecretFiles.h"

#include "support/Test.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/SecretStore.h"

#include <sys/stat.h>

namespace zelvar {
namespace {

DString Shown(std::optional<Secret> const &secret) { return secret ? DString(secret->Reveal()) : "-"; }
DString Shown(std::optional<FoundLogin> const &login) {
    return login ? login->user + " " + DString(login->password.Reveal()) : "-";
}

TEST(SecretFiles, ThePasswordFileOfPostgreSqlIsReadAsItIsWritten) {
    LoginWish const wish{.host = "h", .port = "5432", .database = "d", .user = "u"};
    for (auto const &[text, found] :
         test::Rows<DString, DString>{{"h:5432:d:u:pw\n", "pw"},
                                      {"# h:5432:d:u:no\r\n*:*:*:u:pw\r\n", "pw"},
                                      {"h:1:d:u:no\nh:*:d:u:first\nh:*:d:u:second", "first"},
                                      {"h:5432:d:u:a\\:b\\\\c", "a:b\\c"},
                                      {"h:5432:d:u:a:rest", "a"},
                                      {"h:5432:d:u:\nh:5432:d:u:pw", "pw"},
                                      {"h:5432:d:x:pw", "-"},
                                      {"h:5432:d", "-"},
                                      {"\\", "-"},
                                      {DString(100'000, ':'), "-"},
                                      {"", "-"}})
        EXPECT_EQ(Shown(FindInPgPass(text, wish)), found) << text.substr(0, 60);
}

TEST(SecretFiles, NetrcIsReadByMachineAndAccount) {
    for (auto const &[text, user, found] : test::Rows<DString, DString, DString>{
             {"machine h login u password pw", "", "u pw"},
             {"machine x login u password no\nmachine H\n\tlogin v\n\tpassword \"a b\\\"c\"\n", "v", "v a b\"c"},
             {"machine h login u password no machine h login v password pw", "v", "v pw"},
             {"machine h login u password #pw", "u", "u #pw"},
             {"# machine h login u password no\ndefault login d password pw", "", "d pw"},
             {"macdef init\nmachine h login m password no\n\nmachine h login u account a password pw", "", "u pw"},
             {"machine h login u", "", "-"},
             {"machine", "", "-"},
             {"machine h password \"open", "", " open"},
             {DString(500'000, '#') + "\n", "", "-"},
             {DString(500'000, '\n') + "machine h login u password pw", "", "u pw"}})
        EXPECT_EQ(Shown(FindInNetrc(text, "h", user)), found) << text.substr(0, 60);
    DString comments;
    for (int i = 0; i < 300'000; ++i)
        comments += "#\n";
    EXPECT_EQ(Shown(FindInNetrc(comments, "h", "")), "-");
}

TEST(SecretFiles, SectionsOfIniFilesHoldTheirFirstValues) {
    DString const text =
        "a=no\n[ lab ]\r\na = 1 = 2\r\n# a=3\n;b=4\ns3 =\n  nested = no\n[other]\na=5\n[lab]\na=6\nc=7";
    EXPECT_EQ(FindIniSection(text, "lab"), (IniSection{{"a", "1 = 2"}, {"s3", ""}, {"c", "7"}}));
    EXPECT_EQ(FindIniSection(text, "none"), std::nullopt);
    EXPECT_EQ(FindIniSection("[lab", "lab"), std::nullopt);
    EXPECT_EQ(FindIniSection("[lab]", "lab"), IniSection());
}

TEST(SecretFiles, AFileThatIsNotForTheUserAloneIsRefusedInWords) {
    test::TempFolder const folder;
    DString const path = folder.Write("pass", "text");
    for (auto const &[mode, against] : test::Rows<mode_t, DString>{
             {0600, ""}, {0640, path + " may be read by others and is not used: chmod 600 it."}}) {
        chmod(path.c_str(), mode);
        EXPECT_EQ(ReadSecretFile(path, true).against, against);
        EXPECT_EQ(ReadSecretFile(path, false).text, "text");
    }
    EXPECT_EQ(ReadSecretFile(folder / "none", true).against, "");
    EXPECT_EQ(ReadSecretFile(folder.Path(), false).against, folder.Path() + " cannot be read.");
    folder.Write("large", DString((1U << 20U) + 1, 'x'));
    EXPECT_THAT(ReadSecretFile(folder / "large", false).against, HasSubstr("too large"));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_THAT(ReadSecretFile(folder / "pipe", false).against, HasSubstr("cannot be read"));
}

TEST(SecretFiles, AConnectionFindsItsLoginWhereItSays) {
    test::TempFolder const home;
    for (auto const &[variable, name, text] : test::Rows<char const *, char const *, char const *>{
             {"PGPASSFILE", "pgpass", "db.lab:5432:d:u:from-pgpass\n"},
             {"PGSERVICEFILE", "services", "[lab]\nhost=db.lab\ndbname=d\nuser=u\n[full]\npassword=from-service\n"},
             {"PGSYSCONFDIR", "none", ""},
             {"NETRC", "netrc", "machine web.lab login ann password from-netrc\n"},
             {"AWS_SHARED_CREDENTIALS_FILE", "aws",
              "[lab]\naws_access_key_id=ID\naws_secret_access_key=from-aws\naws_session_token=TOKEN\n"}}) {
        chmod(home.Write(name, text).c_str(), 0600);
        setenv(variable, (home / name).c_str(), 1);
    }
    using enum ConnectionKind;
    using Fields = std::map<DString, DString>;
    for (auto const &[kind, place, fields, found] : test::Rows<ConnectionKind, SecretPlace, Fields, DString>{
             {PostgreSql, SecretPlace::File, {{"host", "db.lab"}, {"database", "d"}, {"user", "u"}}, "from-pgpass"},
             {PostgreSql, SecretPlace::Profile, {{"service", "lab"}}, "from-pgpass"},
             {PostgreSql, SecretPlace::Profile, {{"service", "full"}}, "from-service"},
             {WebFolder, SecretPlace::File, {{"address", "https://web.lab/"}}, "ann from-netrc"},
             {ObjectStore, SecretPlace::Profile, {{"bucket", "b"}, {"profile", "lab"}}, "ID from-awsTOKEN"},
             {PostgreSql, SecretPlace::File, {{"host", "x"}}, "Nothing tells a password: type one, or use ~/.pgpass."},
             {ObjectStore,
              SecretPlace::Profile,
              {{"bucket", "b"}, {"profile", "x"}},
              "There is no profile x in " + (home / "aws") + "."}}) {
        Connection const connection{.name = "n", .kind = kind, .fields = fields, .secret = place};
        SecretAnswer const answer = SecretStore::Instance().Find(connection);
        DString const told = answer.user + (answer.user.empty() ? "" : " ") + DString(answer.secret.Reveal()) +
                             DString(answer.token.Reveal()) + answer.words;
        EXPECT_EQ(told, found);
    }
}

TEST(SecretFiles, WhatAListSaysOfADataSourceGoesToItsReader) {
    test::TempFolder const home;
    setenv("ODBCINI", home.Write("own.ini", "[Lab]\nDriver = SQLite3\nDatabase=/a b.db\nPWD = secret\n").c_str(), 1);
    setenv("ODBCSYSINI", home.Path().c_str(), 1);
    home.Write("odbc.ini", "[Lab]\nDriver=Other\n[Plain]\nDriver=Other\n[Own]\nServer=localhost\nport=3307\n"
                           "[Far]\nServername=db.lab\n[Socket]\nHost=/run/db\n");
    using Texts = std::map<DString, DString>;
    using Hosts = std::vector<HostAndPort>;
    for (auto const &[source, options, secrets, hosts] : test::Rows<DString, Texts, Texts, Hosts>{
             {"Lab", {{"odbc.Driver", "SQLite3"}, {"odbc.Database", "/a b.db"}}, {{"password", "secret"}}, {}},
             {"Plain", {{"odbc.Driver", "Other"}}, {}, {}},
             {"Own",
              {{"odbc.Server", "127.0.0.1"}, {"odbc.port", "3307"}},
              {},
              {{"127.0.0.1", 3307}}}, // no local socket
             {"Far", {{"odbc.Servername", "db.lab"}}, {}, {{"db.lab", 0}}},
             {"Socket", {{"odbc.Host", "/run/db"}}, {}, {}},
             {"None", {}, {}, {}}}) {
        Connection const connection{.name = "n", .kind = ConnectionKind::Odbc, .fields = {{"dsn", source}}};
        ConnectionTerms terms = MakeTerms({.connection = connection, .secret = {}});
        EXPECT_EQ(terms.options.erase("dsn"), 1U);
        EXPECT_EQ(terms.options, options);
        EXPECT_EQ(terms.secrets, secrets);
        EXPECT_EQ(terms.hosts, hosts);
    }
}

} // namespace
} // namespace zelvar
