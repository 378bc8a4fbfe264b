#include "zelvar/connections/ConnectionFiles.h"

#include "support/Test.h"
#include "zelvar/base/Directories.h"
#include "zelvar/connections/ConnectionBook.h"
#include "zelvar/connections/ConnectionTrial.h"

#include <filesystem>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zelvar {
namespace {

struct ConnectionFiles : testing::Test {
    ConnectionFiles() { setenv("ZELVAR_DEFINITIONS_DIR", (m_folder / "new").c_str(), 1); }
    static Connection Database(DString const &name, DString const &host = "db.lab") {
        return {.name = name,
                .kind = ConnectionKind::PostgreSql,
                .fields = {{"host", host}, {"database", "d"}, {"user", "u"}}};
    }
    static std::vector<DString> Names() {
        std::vector<DString> names;
        ConnectionBook const book = ConnectionBook::Read();
        for (auto const &[name, entry] : book.Entries())
            names.push_back(name);
        return names;
    }
    [[nodiscard]] DString Main() const { return test::ReadFile(m_folder / "new/connections.xml"); }

    test::TempFolder m_folder;
};

TEST_F(ConnectionFiles, ProcessesThatAddAtOnceLoseNothing) {
    constexpr int kProcesses = 6;
    constexpr int kEach = 5;
    for (int process = 0; process < kProcesses; ++process)
        if (fork() == 0) {
            bool isDone = true;
            for (int i = 0; i < kEach; ++i)
                isDone = SaveConnection(Database(Format("%d-%d", process, i))).isDone && isDone;
            _exit(isDone ? 0 : 1);
        }
    for (int process = 0; process < kProcesses; ++process) {
        int status = -1;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(Names().size(), static_cast<std::size_t>(kProcesses * kEach));
}

TEST_F(ConnectionFiles, ANameIsTakenOnceUnlessItIsToldWhatToDo) {
    EXPECT_TRUE(SaveConnection(Database("a")).isDone);
    for (auto const &[ifThere, isDone, names, host] :
         test::Rows<IfThere, bool, std::vector<DString>, DString>{{IfThere::Refuse, false, {"a"}, "db.lab"},
                                                                  {IfThere::Skip, true, {"a"}, "db.lab"},
                                                                  {IfThere::Replace, true, {"a"}, "x"},
                                                                  {IfThere::KeepBoth, true, {"a", "a (2)"}, "x"}}) {
        EXPECT_EQ(SaveConnection(Database("a", "x"), ifThere).isDone, isDone);
        EXPECT_EQ(Names(), names);
        EXPECT_EQ(ConnectionBook::Now()->Find("a")->connection.Field("host"), host);
    }
    EXPECT_EQ(SaveConnection(Database("a")).words, "There is a connection called a already.");
    EXPECT_THAT(SaveConnection(Database("")).words, HasSubstr("A name is needed."));
    EXPECT_EQ(EditConnection("a", Database("a (2)")).words, "There is a connection called a (2) already.");
    EXPECT_TRUE(EditConnection("a", Database("b")).isDone);
    EXPECT_TRUE(RemoveConnection("a (2)").isDone);
    EXPECT_EQ(RemoveConnection("a (2)").words, "There is no connection called a (2).");
    EXPECT_THAT(Names(), ElementsAre("b"));
}

TEST_F(ConnectionFiles, ADamagedFileIsLeftAsItIsAndOthersAreEditedInPlace) {
    DString const more = m_folder.Write(
        "new/more.xml", "<DataSources><DataSource name='old' url='/x'><Parameters/></DataSource></DataSources>");
    EXPECT_TRUE(EditConnection("old", Database("old")).isDone);
    EXPECT_THAT(test::ReadFile(more), HasSubstr("db.lab"));
    m_folder.Write("new/connections.xml", "<DataSources><DataSource");
    for (ConnectionChange const &change : {SaveConnection(Database("a")), RemoveConnection("old")}) {
        EXPECT_FALSE(change.isDone);
        EXPECT_THAT(change.words, HasSubstr("connections.xml cannot be read"));
    }
    EXPECT_EQ(Main(), "<DataSources><DataSource");
}

TEST_F(ConnectionFiles, AnExportHoldsNoSecretAndComesBack) {
    m_folder.Write("new/connections.xml",
                   "<DataSources><DataSource name='old' url='http://${user}:${password}@h/' colour='red'>"
                   "<Parameters>user=u;password=MARKER</Parameters><Connection token='MARKER'/></DataSource>"
                   "<DataSource name='odd' url='PG:host=h password=MARKER'><Parameters/></DataSource></DataSources>");
    ASSERT_TRUE(SaveConnection(Database("a: \"}%")).isDone);
    DString const file = m_folder / "export.xml";
    EXPECT_FALSE(ExportConnections({"odd"}, file).isDone);
    EXPECT_FALSE(ExportConnections({"none"}, file).isDone);
    EXPECT_FALSE(std::filesystem::exists(file));
    ASSERT_TRUE(ExportConnections({"old", "a: \"}%"}, file).isDone);
    EXPECT_THAT(test::ReadFile(file),
                testing::AllOf(testing::Not(HasSubstr("MARKER")), HasSubstr("secret=\"ask\""), HasSubstr("red")));

    DString const before = Main();
    EXPECT_EQ(ImportConnections(file).words, "There is a connection called old already.");
    EXPECT_EQ(Main(), before);
    EXPECT_THAT(ImportConnections(file, IfThere::Skip).names, IsEmpty());
    EXPECT_THAT(ImportConnections(file, IfThere::KeepBoth).names, ElementsAre("old (2)", "a: \"}% (2)"));
    EXPECT_TRUE(ImportConnections(file, IfThere::Replace).isDone);
    EXPECT_EQ(ConnectionBook::Now()->Find("old")->connection.secret, SecretPlace::Ask);
    EXPECT_EQ(Names().size(), 5U);
    m_folder.Write("twice.xml", "<D><DataSource name='t' url='1'><Parameters/></DataSource>"
                                "<DataSource name='t' url='2'><Parameters/></DataSource></D>");
    EXPECT_THAT(ImportConnections(m_folder / "twice.xml", IfThere::Replace).names, ElementsAre("t", "t (2)"));
    for (auto const &[text, words] : test::Rows<char const *, char const *>{
             {"<D/>", "holds no connections"},
             {"<D><DataSource name='x' url='${y}'><Parameters/></DataSource></D>", "The connection x has no address."},
             {"<D", "bad.xml"}})
        EXPECT_THAT(ImportConnections(m_folder.Write("bad.xml", text)).words, HasSubstr(words));
}

TEST_F(ConnectionFiles, AMonikerFindsTheConnectionOfItsLongestAddressAndItsTerms) {
    m_folder.Write("new/connections.xml",
                   "<D><DataSource name='wide' url='s3://lab@b/'><Parameters/>"
                   "<Connection endpoint='http://s3.lab:9000' region='eu' allow='cdn.lab:443'/></DataSource>"
                   "<DataSource name='deep' url='s3://lab@b/in/'><Parameters/></DataSource>"
                   "<DataSource name='old' url='https://u:MARKER@h/'><Parameters/></DataSource></D>");
    ConnectionBook const book = ConnectionBook::Read();
    for (auto const &[address, name] : test::Rows<char const *, char const *>{{"s3://lab@b/x", "wide"},
                                                                              {"s3://lab@b/in/x%20y", "deep"},
                                                                              {"s3://b/x", ""},
                                                                              {"https://u@h/a", "old"},
                                                                              {"", ""}}) {
        ConnectionBook::Entry const *const entry = book.FindByAddress(address);
        EXPECT_EQ(entry == nullptr ? "" : entry->connection.name, name) << address;
    }
    UseDefinedConnections();
    ConnectionTerms const terms = TermsOf("s3://lab@b/x");
    EXPECT_EQ(terms.id, "s3://lab@b/");
    EXPECT_THAT(terms.hosts,
                ElementsAre(HostAndPort{"s3.lab", 9000}, HostAndPort{"*.s3.lab", 9000}, HostAndPort{"cdn.lab", 443}));
    EXPECT_EQ(terms.options.at("region"), "eu");
    EXPECT_EQ(terms.options.at("endpoint") + terms.options.at("https"), "s3.lab:9000no");
    EXPECT_EQ(TermsOf("https://u@h/a").secrets.at("password"), "MARKER");
    EXPECT_THAT(TermsOf("https://u@h/a").id, testing::Not(HasSubstr("MARKER")));
    ASSERT_TRUE(SaveConnection(Database("new")).isDone);
    EXPECT_EQ(TermsOf("postgresql://u@db.lab/d/t").id, "postgresql://u@db.lab/d");
    SetConnectionFinder({});
}

/// A port of the loopback interface that takes connections, or none once it is closed.
struct Port : test::Pinned {
    Port() {
        sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
        socklen_t size = sizeof address;
        bind(m_socket, reinterpret_cast<sockaddr *>(&address), size);
        listen(m_socket, 1);
        getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size);
        m_number = ntohs(address.sin_port);
    }
    ~Port() { close(m_socket); }
    int m_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_number = 0;
};

TEST(ConnectionTrial, TellsEachStepInWords) {
    Port const open;
    int closed = 0;
    {
        Port const gone;
        closed = gone.m_number;
    }
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    auto const at = [](int port) { return "127.0.0.1:" + std::to_string(port); };
    StopSignal const stopped(true);
    for (auto const &[host, port, secret, stop, told] :
         test::Rows<DString, int, SecretPlace, StopSignal const *, DString>{
             {"no..server", 1, SecretPlace::None, nullptr, "name 1 No server named no..server is known.\n"},
             {"127.0.0.1", closed, SecretPlace::None, nullptr,
              "name 0 127.0.0.1 is 127.0.0.1.\nconnection 1 " + at(closed) +
                  " refuses connections: is PostgreSQL running there?\n"},
             {"127.0.0.1", open.m_number, SecretPlace::Ask, nullptr,
              "name 0 127.0.0.1 is 127.0.0.1.\nconnection 0 " + at(open.m_number) +
                  " takes connections.\npassword 1 Nothing tells a password: type one, or use ~/.pgpass.\n"},
             {"127.0.0.1", open.m_number, SecretPlace::None, nullptr,
              "name 0 127.0.0.1 is 127.0.0.1.\nconnection 0 " + at(open.m_number) +
                  " takes connections.\nlisting 0 Works: 1 folder.\n"},
             {"no..server", 1, SecretPlace::None, &stopped, "name 2 Stopped.\n"}}) {
        Connection const connection{
            .name = "n",
            .kind = ConnectionKind::PostgreSql,
            .fields = {{"host", host}, {"port", std::to_string(port)}, {"database", "d"}, {"user", "trial"}},
            .secret = secret};
        DString words;
        auto const hear = [&](TrialResult const &result) {
            words += DString(TrialStepInWords(result.step)) + " " + std::to_string(static_cast<int>(result.state)) +
                     " " + result.words + "\n";
        };
        auto const list = [] { return ListedConnection{.folders = 1}; };
        EXPECT_EQ(ConnectionTrial({.connection = connection}, list).Run(hear, stop), told.ends_with("folder.\n"));
        EXPECT_EQ(words, told);
    }
}

TEST_F(ConnectionFiles, AreRenamedAndDuplicatedWholeAndTellWhatAnImportMeets) {
    std::filesystem::create_directories(m_folder / "new");
    m_folder.Write("new/connections.xml",
                   "<DataSources><DataSource name=\"a\" url=\"http://h/y\"><Parameters/><Mine/></DataSource>"
                   "<DataSource name=\"b\" url=\"http://h/z\"><Parameters/></DataSource></DataSources>");
    EXPECT_THAT(RenameConnection("a", "b").words, testing::HasSubstr("called b already"));
    EXPECT_THAT(RenameConnection("a", " ").words, testing::HasSubstr("A name is needed"));
    EXPECT_FALSE(RenameConnection("none", "c").isDone);
    EXPECT_TRUE(RenameConnection("a", "c").isDone);
    EXPECT_EQ(DuplicateConnection("c").names, std::vector<DString>{"c (2)"});
    DString const text = Main();
    EXPECT_EQ(Names(), (std::vector<DString>{"b", "c", "c (2)"})) << text;
    EXPECT_NE(text.find("<Mine"), text.rfind("<Mine")) << "what is not known goes along\n" << text;
    DString const file = m_folder / "export.xml";
    EXPECT_TRUE(ExportConnections({"b", "c"}, file).isDone);
    EXPECT_TRUE(RemoveConnection("b").isDone);
    EXPECT_EQ(ConflictsOfImport(file).names, std::vector<DString>{"c"});
    EXPECT_FALSE(ConflictsOfImport(m_folder / "none").isDone);
}

} // namespace
} // namespace zelvar
