#include "support/PostgresServer.h"
#include "support/RunCommand.h"
#include "support/Test.h"

#include <filesystem>

#include <sys/stat.h>

namespace zelvar {
namespace {

using test::Outcome;
using Words = std::vector<std::string>;

TEST(DatabaseCommand, ScriptsReadWhatADatabaseHoldsAndItsPasswordIsShownNowhere) {
    test::PostgresServer server;
    ASSERT_EQ(server.Start(), "");
    ASSERT_EQ(
        server.Execute(
            "create schema survey; create table survey.plots (id int primary key, name text);"
            "insert into survey.plots values (2, 'two'), (1, 'one'); create schema images;"
            "create table images.h as select st_addband(st_makeemptyraster(40, 30, 0, 0, 1), '8BUI'::text, 7) rast"),
        "");
    test::TempFolder const folder;
    std::string const login = folder.Write("pgpass", "127.0.0.1:*:*:zelvar:MARKER\\:7\\\\%41 pw\n");
    ASSERT_EQ(chmod(login.c_str(), 0600), 0);
    std::string const log = folder / "log";
    std::string const variables = "ZELVAR_DEFINITIONS_DIR=" + test::Quoted(folder.Folder("definitions")) +
                                  " PGPASSFILE=" + test::Quoted(login) +
                                  " ZELVAR_LOG_LEVEL=9 ZELVAR_LOG=" + test::Quoted(log);
    std::string const port = std::to_string(server.Port());
    std::string const address = "postgresql://zelvar@127.0.0.1:" + port + "/field";
    std::string shown;
    for (auto const &[words, exitCode, told] : test::Rows<Words, int, std::string>{
             {{"ls", address}, 3, "No connection for 127.0.0.1:" + port + " is defined."},
             {{"table", address + "/survey/plots"}, 3, "No connection for 127.0.0.1:" + port + " is defined."},
             {{"sources", "add", address, "--name", "Field", "--secret", "file"}, 0, "Field\n"},
             {{"sources", "test", "Field"}, 0, "Works: 2 folders."},
             {{"ls", "source:Field"}, 0, "images\t" + address + "/images\t1 table\n"},
             {{"ls", address + "/survey"}, 0, "node\t-1\t-\tplots\t" + address + "/survey/plots\ttable"},
             {{"ls", "--recursive", "source:Field"}, 0, address + "/images/h?COLUMN=rast\traster\n"},
             {{"table", "--print", address + "/survey/plots"}, 0, "1\tone\n2\ttwo\n"},
             {{"info", address + "/images/h?COLUMN=rast"}, 0, "Image Width\t40\n"},
             {{"info", address + "/images/none"}, 3, "there is no table images.none"},
             {{"open", "--for", "raster", "--select", "h", "--accept", address + "/images"},
              0,
              address + "/images/h?COLUMN=rast\n"},
             {{"sources", "add", "postgresql://zelvar@127.0.0.1:" + port + "/nope", "--name", "None", "--secret",
               "file"},
              0,
              ""},
             {{"ls", "source:None"}, 3, "database \"nope\" does not exist; there are field, postgres"},
             {{"sources", "test", "None"}, 3, "database \"nope\" does not exist"}}) {
        Outcome const outcome = test::Zelvar(words, variables);
        EXPECT_EQ(outcome.exitCode, exitCode) << testing::PrintToString(words) << outcome.err;
        EXPECT_THAT(outcome.out + outcome.err, HasSubstr(told)) << testing::PrintToString(words);
        shown += outcome.out + outcome.err;
    }
    for (auto const &entry : std::filesystem::directory_iterator(folder.Folder("definitions")))
        shown += test::ReadFile(entry.path());
    EXPECT_THAT(shown + test::ReadFile(log), testing::Not(HasSubstr("MARKER")));
}

} // namespace
} // namespace zelvar
