#include "support/HttpServer.h"
#include "support/LoopbackPort.h"
#include "support/RunCommand.h"
#include "support/SessionBus.h"
#include "support/Test.h"

#include <filesystem>

namespace zelvar {
namespace {

using test::Outcome;
using test::Zelvar;
using Words = std::vector<std::string>;

struct SourcesCommand : testing::Test {
    /// All files of the definitions, one behind the other.
    [[nodiscard]] DString Definitions() const {
        DString text;
        for (auto const &entry : std::filesystem::directory_iterator(m_folder.Folder("definitions")))
            text += test::ReadFile(entry.path());
        return text;
    }
    [[nodiscard]] Outcome Run(Words words) const {
        words.insert(words.begin(), "sources");
        return Zelvar(words, m_variables);
    }

    test::TempFolder m_folder;
    std::string m_log = m_folder / "log";
    std::string m_variables = "ZELVAR_DEFINITIONS_DIR=" + test::Quoted(m_folder.Folder("definitions")) +
                              " ZELVAR_LOG_LEVEL=9 ZELVAR_LOG=" + test::Quoted(m_log);
};

TEST_F(SourcesCommand, ScriptsMakeChangeAndPassOnConnections) {
    std::string const file = m_folder / "export.xml";
    std::string const odd = "a: \"b\"? 50% }";
    for (auto const &[words, exitCode, told] : test::Rows<Words, int, char const *>{
             {{"add", "postgresql://u@db.lab/field", "--name", odd, "--field", "schemas=a,b"}, 0, "50% }\n"},
             {{"add", "host=db.lab dbname=field", "--name", odd}, 3, "is a connection called a: "},
             {{"add", "postgresql://u@h/d", "--name", odd, "--replace", "--allow", "cdn.lab:443"}, 0, "50% }\n"},
             {{"add", "--kind", "map", "--name", "m", "--field", "address=m"}, 2, "begins with http://"},
             {{"add", "--kind", "map", "--name", "m", "--field", "host=m"}, 2, "fields are address, service"},
             {{"add", "--kind", "address", "--name", "m"}, 2, "there is no kind address"},
             {{"add", "s3://b/", "--kind", "web", "--name", "m"}, 2, "the address is one of the kind objects"},
             {{"add", "--name", "m"}, 2, "a kind or an address is needed"},
             {{"add", "nothing", "--name", "m"}, 2, "this is no address"},
             {{"add", "s3://b/", "--name", "m", "--secret", "definition"}, 2, "a secret is kept by"},
             {{"add", "s3://b/", "--name", "m", "--password", "x"}, 2, "only --secret keyring"},
             {{"add", "s3://b/", "--name", "m", "--time-limit", "0"}, 2, "time limit"},
             {{"add", "s3://b/", "--name", "m", "--allow", "h:x"}, 2, "no host"},
             {{"add", "s3://b/", "--name", "m", "--skip", "--replace"}, 2, "only one of"},
             {{"add", "s3://b/"}, 2, "name: A name is needed."},
             {{"export", odd, file}, 0, ""},
             {{"export", "none", file}, 3, "no connection called none"},
             {{"import", file}, 3, "is a connection called"},
             {{"import", file, "--keep-both"}, 0, "50% } (2)\n"},
             {{"remove", odd + " (2)"}, 0, ""},
             {{"remove", odd + " (2)"}, 3, "no connection called"},
             {{"test", "none"}, 3, "no connection called"},
             {{"test"}, 2, "an argument is missing"},
             {{"list", "x"}, 2, "too many arguments"}}) {
        Outcome const outcome = Run(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << testing::PrintToString(words) << outcome.err;
        EXPECT_THAT(exitCode == 0 ? outcome.out : outcome.err, HasSubstr(told)) << testing::PrintToString(words);
    }
    EXPECT_THAT(Definitions(), testing::AllOf(HasSubstr("allow=\"cdn.lab:443\""), testing::Not(HasSubstr("a,b"))));
    EXPECT_THAT(test::Column(Run({"list"}).out, 1), testing::Contains(odd));
}

TEST_F(SourcesCommand, APasswordIsInTheKeyringAndNowhereElse) {
    constexpr char kMarker[] = "MARKER-%-\"pw";
    test::SessionBus bus;
    ASSERT_TRUE(bus.IsThere()) << "dbus-daemon, at-spi2-core, gnome-keyring";
    std::string const password = m_folder.Write("password", DString(kMarker) + "\n");
    test::HttpServer server;
    server.Serve("/dir/",
                 "<title>Index of /dir/</title><h1>Index of /dir/</h1><pre><a href=\"../\">../</a>\n"
                 "<a href=\"a.tif\">a.tif</a>  01-Jan-2024 10:00    1234\n</pre>",
                 "text/html");
    server.Serve("/dir/a.tif", "no image");
    std::string const address = "http://ann@127.0.0.1:" + std::to_string(server.Port()) + "/dir/";
    Words const add{"add", address, "--name", "web", "--secret", "keyring", "--password", password, "--replace"};
    DString told;
    auto const run = [&](Words const &words) {
        Outcome const outcome = Run(words);
        told += outcome.out + outcome.err;
        return outcome;
    };
    EXPECT_EQ(run({"add", "http://ann:" + DString(kMarker) + "@h/", "--name", "no"}).exitCode, 2);
    Outcome const none = run(add);
    EXPECT_EQ(none.exitCode, 3);
    EXPECT_THAT(none.err, HasSubstr("not kept: This desktop has no keyring."));
    EXPECT_THAT(run({"test", "web"}).out, HasSubstr("password\tfailed"));
    bus.StartKeyring();
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (run(add).exitCode != 0 && std::chrono::steady_clock::now() < end) {
    }
    EXPECT_EQ(test::Column(run({"test", "web"}).out, 1), std::vector<std::string>(7, "works"));
    EXPECT_EQ(run({"export", "web", m_folder / "export.xml"}).exitCode, 0);
    EXPECT_EQ(run({"remove", "web"}).exitCode, 0);
    EXPECT_EQ(run({"import", m_folder / "export.xml"}).exitCode, 0);
    EXPECT_THAT(run({"test", "web"}).out, HasSubstr("password\tfailed")) << "forgotten with its connection";
    for (DString const &text : {told, Definitions(), test::ReadFile(m_folder / "export.xml"), test::ReadFile(m_log)})
        EXPECT_THAT(text, testing::AllOf(testing::Not(IsEmpty()), testing::Not(HasSubstr("MARKER"))));
}

TEST_F(SourcesCommand, AServerThatNeverTakesAConnectionIsLeftAtItsTimeOrByTheUser) {
    test::SilentPort const silent;
    std::string const at = silent.Place();
    ASSERT_EQ(Run({"add", "postgresql://u@" + at + "/d", "--name", "s", "--time-limit", "1"}).exitCode, 0);
    Outcome const late = Run({"test", "s"});
    EXPECT_EQ(late.exitCode, 3);
    EXPECT_THAT(late.out, HasSubstr(at + " does not answer (1 s)."));
    ASSERT_EQ(Run({"add", "postgresql://u@" + at + "/d", "--name", "s", "--time-limit", "60", "--replace"}).exitCode,
              0);
    // Ctrl-C once the first step has been told.
    std::string const interrupt =
        R"( sh -c 'set -m; "$0" "$@" & until grep -q works /proc/$$/fd/1; do sleep 0.01; done;)"
        R"( kill -INT $!; wait $!')";
    Outcome const stopped = Zelvar({"sources", "test", "s"}, m_variables + interrupt);
    EXPECT_EQ(stopped.exitCode, 1);
    EXPECT_THAT(stopped.out, HasSubstr("connection\tstopped\t"));
}

TEST_F(SourcesCommand, AListingOfASilentServerEndsAtTheConnectionsTimeOrTheUsersWord) {
    using std::chrono::steady_clock, std::chrono::seconds;
    test::HttpServer server;
    server.Hang();
    for (auto const &[name, limit] : test::Rows<char const *, char const *>{{"short", "1"}, {"long", "600"}})
        ASSERT_EQ(Run({"add", server.Url() + "/" + name + "/", "--name", name, "--time-limit", limit}).exitCode, 0);
    auto const begin = steady_clock::now();
    Outcome const late = Zelvar({"ls", "source:short"}, m_variables);
    EXPECT_EQ(late.exitCode, 3);
    EXPECT_THAT(late.err, HasSubstr("too slow"));
    Outcome const stopped = Zelvar({"ls", "source:long"}, m_variables + " timeout -s INT 1");
    EXPECT_EQ(stopped.exitCode, 124); // it has ended, or would have been waited for
    EXPECT_LT(steady_clock::now() - begin, seconds(20));
}

} // namespace
} // namespace zelvar
