// `zelvar open` and `zelvar save` through both dialogs.
#include "support/ImageFiles.h"
#include "support/RunCommand.h"
#include "support/Test.h"

#include <filesystem>

namespace zelvar {
namespace {

using test::Outcome;
using test::Zelvar;

struct FileDialogCommand : testing::Test {
    FileDialogCommand() { test::WriteImage(folder / "grey.tif", {.width = 60, .height = 30}); }
    /// A run with settings of its own.
    [[nodiscard]] Outcome Run(std::vector<std::string> const &words) const {
        return Zelvar(words, "ZELVAR_SETTINGS=" + test::Quoted(settings / "s.db"));
    }
    /// The line of `zelvar info` for the picture's width.
    [[nodiscard]] static bool IsImage(std::string const &moniker) {
        return moniker.ends_with('\n') &&
               Zelvar({"info", moniker.substr(0, moniker.size() - 1)}).out.find("Image Width\t") != std::string::npos;
    }

    test::TempFolder folder;
    test::TempFolder settings;
};

TEST_F(FileDialogCommand, EachKindIsOpenedAndSavedByItsOperation) {
    // Kind, a file that can be picked, what saving "new" gives; null if there is nothing to save.
    test::Rows<char const *, char const *, char const *> const cases = {
        {"raster", "grey.tif", "new.tif"}, {"thematic", "grey.tif", "new.tif"}, {"attributes", "a.csv", "new.csv"},
        {"metadata", "a.csv", nullptr},    {"table", "a.txt", "new.txt"},       {"tiff", "grey.tif", "new.tif"},
        {"xml", "a.xml", "new.xml"},       {"project", "a.mvp", "new.mvp"},     {"workspace", "a.mvw", "new.mvw"},
        {"process", "a.mvr", "new.mvr"},   {"ruleset", "a.mvt", "new.mvr"},     {"solution", "a.mvs", "new.mvs"},
        {"all", "anything", "new"}};
    for (auto const &[kind, file, saved] : cases) {
        SCOPED_TRACE(kind);
        if (!std::filesystem::exists(folder / file))
            folder.Write(file);
        Outcome const open = Run({"open", folder.Path(), "--for", kind, "--select", file, "--accept"});
        EXPECT_EQ(open.out, folder / file + "\n") << open.err;
        EXPECT_EQ(open.exitCode, 0);
        Outcome const save = Run({"save", folder / "new", "--for", kind, "--accept"});
        EXPECT_EQ(save.exitCode, saved == nullptr ? 2 : 0) << save.err;
        EXPECT_EQ(save.out, saved == nullptr ? "" : folder / saved + "\n");
    }
}

TEST_F(FileDialogCommand, WhatIsPrintedOpensTheSameImageAgain) {
    for (char const *name : {"a b.tif", "a&b.tif", "100%41.tif", "#1.tif", "a?b.tif", "a?b=1.tif", "it's \"it\".tif",
                             "gr\xc3\xbc\xc3\x9f.tif", "-x.tif", "a;b|c.tif"}) {
        SCOPED_TRACE(name);
        std::filesystem::copy_file(folder / "grey.tif", folder / name);
        for (std::vector<std::string> words : {std::vector<std::string>{}, {"--standard"}}) {
            std::string const select = std::string("--select=") + name;
            words.insert(words.begin(), {"open", folder.Path(), select, "--accept"});
            Outcome const open = Run(words);
            EXPECT_EQ(open.out, folder / name + "\n") << open.err;
            EXPECT_TRUE(IsImage(open.out));
        }
    }
}

TEST_F(FileDialogCommand, WhatSpeaksAgainstAFileIsToldWhenItIsAccepted) {
    test::WriteImage(folder / "strips.tif", {.width = 60, .height = 300, .options = {"BLOCKYSIZE=10"}});
    std::string const whole = test::ReadFile(folder / "strips.tif");
    for (auto const &[name, content, told] : test::Rows<char const *, std::string, char const *>{
             {"whole.tif", whole, ""},
             {"head.tif", whole.substr(0, 10), "zelvar: accepted: head.tif: cannot be opened: it is damaged"},
             {"half.tif", whole.substr(0, whole.size() / 2), "damaged: 1"},
             {"notes.txt", "hello", "zelvar: accepted: notes.txt: cannot be opened: its format is not supported"}}) {
        std::string const path = folder.Write(name, content);
        Outcome const open = Run({"open", folder.Path(), "--filter", "*.*", "--select", name, "--accept"});
        EXPECT_EQ(open.out, path + "\n");
        EXPECT_EQ(open.exitCode, 0);
        EXPECT_THAT(open.err, HasSubstr(told)) << name;
        EXPECT_EQ(open.err.find("accepted") == std::string::npos, *told == '\0') << open.err;
    }
}

TEST_F(FileDialogCommand, ANodeOfAContainerIsPickedInEitherDialog) {
    for (char const *name : {"pages.tif", "p?1 & #2 50%.tif", "odd \"quoted\" name.tif"}) {
        SCOPED_TRACE(name);
        test::WritePages(folder / name, 2);
        std::string const node = "Page 2 (64P x 48L x 1B)";
        Outcome const own = Run({"open", folder / name, "--select", node, "--accept"});
        Outcome const platform =
            Run({"open", folder.Path(), "--standard", "--select", name, "--select", node, "--accept"});
        EXPECT_EQ(own.exitCode, 0) << own.err;
        EXPECT_EQ(platform.out, own.out) << platform.err;
        EXPECT_TRUE(IsImage(own.out)) << own.out;
    }
}

TEST_F(FileDialogCommand, ThePlatformsDialogPicksFilesByTheirNames) {
    test::WriteImage(folder / "b.tif");
    std::vector<std::string> words{"open",           folder.Path(), "--standard", "--select",   "grey.tif",
                                   "--select",       "b.tif",       "--accept",   "--multiple", "--shot",
                                   folder / "s.png", "--title",     "Mine"};
    Outcome const both = Run(words);
    EXPECT_EQ(both.out, folder / "b.tif\n" + folder / "grey.tif\n") << both.err << "sorted by name";
    EXPECT_EQ(test::ReadFile(folder / "s.png").substr(1, 3), "PNG");
    EXPECT_EQ(Run({"open", folder.Path(), "--standard"}).exitCode, 1) << "nobody could press anything";
    EXPECT_EQ(Run({"open", folder.Path(), "--standard", "--recursive"}).exitCode, 2);
    EXPECT_EQ(Run({"open", folder.Path(), "--standard", "--filter", "*.tif"}).exitCode, 2);
    EXPECT_EQ(Run({"open", folder / "grey.tif", "--standard", "--accept"}).out, folder / "grey.tif\n")
        << "the file stands in the field";
}

TEST_F(FileDialogCommand, OptionsStandInTheMonikerAndReachTheDriver) {
    DString const grid = folder.Write("g.asc", "ncols 1\nnrows 1\nxllcorner 0\nyllcorner 0\ncellsize 1\n1\n");
    EXPECT_EQ(Zelvar({"info", grid, "--options"}).out,
              "DATATYPE\tchoice\t\tData type to be used.\tInt32|Float32|Float64\n");
    for (char const *const dialog : {"--multiple", "--standard"}) {
        Outcome const open = Run({"open", folder.Path(), "--select=g.asc", "--accept", dialog, "--option",
                                  "DATATYPE=Float32", "--option", "OTHER=a b&c"});
        EXPECT_THAT(open.out, testing::AllOf(testing::StartsWith(grid + "?"), HasSubstr("DATATYPE=Float32"),
                                             HasSubstr("OTHER=a%20b%26c")))
            << open.err;
        EXPECT_THAT(Zelvar({"info", open.out.substr(0, open.out.size() - 1)}).out, HasSubstr("32 bit float"));
    }
    EXPECT_EQ(Run({"save", folder / "x.tif", "--for", "raster", "--accept", "--option", "COMPRESS=LZW"}).out,
              folder / "x.tif" + "?COMPRESS=LZW\n");
}

TEST_F(FileDialogCommand, SavingOverAFileIsAskedAboutAndAScriptSaysNo) {
    std::vector<std::string> words{"save", folder.Write("there.mvp"), "--for", "project", "--accept"};
    Outcome const asked = Run(words);
    EXPECT_EQ(asked.exitCode, 1);
    EXPECT_EQ(asked.out, "");
    EXPECT_THAT(asked.err, HasSubstr("answered no: there.mvp already exists."));
    words.emplace_back("--overwrite");
    EXPECT_EQ(Run(words).out, folder / "there.mvp\n");
}

TEST_F(FileDialogCommand, FaultsAreToldByTheExitCode) {
    std::pair<std::vector<std::string>, int> const cases[] = {
        {{"save"}, 2},
        {{"save", "--for", "nothing"}, 2},
        {{"save", "x", "--for", "metadata"}, 2},
        {{"save", "x", "--for", "project", "--select", "y"}, 2},
        {{"save", folder / "no/folder/x", "--for", "project", "--accept"}, 3},
        {{"save", folder / "grey.tif/x", "--for", "project", "--accept"}, 3},
        {{"save", folder.Path(), "--for", "project", "--accept"}, 1}, // no name to save under
        {{"save", folder / "x", "--for", "project"}, 1},              // nobody presses OK
        {{"open", folder.Path(), "--for", "xml", "--select=grey.tif", "--size", "9"}, 2},
        {{"open", folder.Path(), "--plain", "--option", "A=1"}, 2},
        {{"save", folder / "x", "--for", "raster", "--option", "=1"}, 2},
        {{"open", folder.Path(), "--select=grey.tif", "--accept", "--option", "GEOTIFF_KEYS_FLAVOR=none"}, 3},
        {{"save", folder / "x.tif", "--for", "raster", "--accept", "--option", "ZLEVEL=much"}, 3},
        {{"open", "", "--accept"}, 3}};
    for (auto const &[words, exitCode] : cases) {
        Outcome const outcome = Run(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << testing::PrintToString(words) << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
}

} // namespace
} // namespace zelvar
