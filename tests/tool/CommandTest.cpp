#include "support/ImageFiles.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include <sys/wait.h>

namespace zelvar {
namespace {

using testing::HasSubstr;

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

std::string Quoted(std::string const &word) {
    std::string quoted = "'";
    for (char const c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

/// Runs the command as a script does.
Outcome Zelvar(std::vector<std::string> const &words) {
    test::TempFolder const scratch;
    std::string line = Quoted(ZELVAR_COMMAND);
    for (std::string const &word : words)
        line += " " + Quoted(word);
    line += " >" + Quoted(scratch / "out") + " 2>" + Quoted(scratch / "err") + " </dev/null";
    int const status = std::system(line.c_str()); // NOLINT(cert-env33-c,concurrency-mt-unsafe): a script is played
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, test::ReadFile(scratch / "out"),
            test::ReadFile(scratch / "err")};
}

class Command : public testing::Test {
protected:
    void SetUp() override {
        test::WriteImage(folder / "grey.tif", {.width = 60, .height = 30, .type = GDT_UInt16});
        folder.Write("notes.txt", "12345");
        folder.Folder("sub");
    }
    test::TempFolder folder;
};

TEST_F(Command, LsPrintsARowALineWithKindSizeTimeNameAndPath) {
    Outcome const ls = Zelvar({"ls", folder.Path(), "--sort", "name"});
    EXPECT_EQ(ls.exitCode, 0);
    EXPECT_THAT(ls.out, HasSubstr("folder\t-1\t-\tsub\t" + folder / "sub\n"));
    EXPECT_THAT(ls.out, HasSubstr("file\t5\t"));
    EXPECT_LT(ls.out.find("grey.tif"), ls.out.find("notes.txt"));
    EXPECT_EQ(Zelvar({"ls", folder.Path(), "--folders"}).out, "folder\t-1\t-\tsub\t" + folder / "sub\n");
    EXPECT_EQ(Zelvar({"ls", folder.Path(), "--recursive", "--filter", "*.none"}).out, "");
}

TEST_F(Command, NamesWithAnyBytesStayOnOneLineAndJsonStaysValid) {
    test::TempFolder const odd;
    odd.Write("line\nfeed\xff.txt", "x");
    EXPECT_THAT(Zelvar({"ls", odd.Path()}).out, HasSubstr("\tline\\x0Afeed\xff.txt\t"));
    EXPECT_THAT(Zelvar({"ls", odd.Path(), "--json"}).out, HasSubstr(R"("name": "line\u000afeed�.txt")"));
}

TEST_F(Command, InfoPrintsPropertiesAndWritesThePreview) {
    Outcome const info = Zelvar({"info", folder / "grey.tif", "--preview", folder / "p.png"});
    EXPECT_EQ(info.exitCode, 0) << info.err;
    EXPECT_THAT(info.out, HasSubstr("Image Width\t60\nImage Height\t30\nData Type\t16 bit unsigned\n"));
    EXPECT_EQ(test::ReadFile(folder / "p.png").substr(1, 3), "PNG");
    Outcome const plain = Zelvar({"info", folder / "notes.txt", "--preview", folder / "q.png"});
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_THAT(plain.out, HasSubstr("Preview is not available\n"));
    EXPECT_EQ(plain.out.find("Image Width"), std::string::npos);
}

TEST_F(Command, ExitCodesTellUsageFromFailure) {
    struct Case {
        std::vector<std::string> words;
        int exitCode;
    };
    Case const cases[] = {
        {{}, 2},
        {{"nonsense"}, 2},
        {{"ls"}, 2},
        {{"ls", folder.Path(), "--sort", "colour"}, 2},
        {{"ls", folder / "nowhere"}, 3},
        {{"info", folder / "nowhere.tif"}, 3},
        {{"open", folder / "nowhere"}, 3},
        {{"open", folder.Path(), "--for", "nothing"}, 2},
        {{"open", folder.Path(), "--size", "big"}, 2},
        {{"--help"}, 0},
    };
    for (Case const &c : cases) {
        Outcome const outcome = Zelvar(c.words);
        EXPECT_EQ(outcome.exitCode, c.exitCode) << testing::PrintToString(c.words);
        EXPECT_EQ(outcome.err.empty(), c.exitCode == 0);
    }
}

TEST_F(Command, OpenPicksBySelectionAcceptsAndLeavesAPicture) {
    Outcome const open =
        Zelvar({"open", folder.Path(), "--select", "grey.tif", "--accept", "--shot", folder / "shot.png"});
    EXPECT_EQ(open.exitCode, 0) << open.err;
    EXPECT_EQ(open.out, folder / "grey.tif\n");
    EXPECT_EQ(test::ReadFile(folder / "shot.png").substr(1, 3), "PNG");
}

TEST_F(Command, OpenWithoutAHandToPressAnythingIsCancelled) {
    Outcome const open = Zelvar({"open", folder.Path()});
    EXPECT_EQ(open.exitCode, 1) << open.err;
    EXPECT_EQ(open.out, "");
}

TEST_F(Command, SourcesListsTheDrivesWithTheirGroup) {
    Outcome const sources = Zelvar({"sources"});
    EXPECT_EQ(sources.exitCode, 0);
    EXPECT_THAT(sources.out, HasSubstr("Drives\t"));
}

} // namespace
} // namespace zelvar
