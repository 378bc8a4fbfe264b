#include "zelvar/tool/CommandLine.h"

#include "support/RunCommand.h"
#include "support/Test.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/ManualPages.h"

namespace zelvar::tool {
namespace {

CommandSpec const kSpec{.name = "ls", .options = {{"--json"}, {"--sort", "KEY"}}, .minArguments = 1, .maxArguments = 2};

TEST(CommandLine, OptionsStandAnywhereAndKeepEveryValue) {
    DString error;
    auto const parsed = ParseArguments(kSpec, {"--sort=name", "a", "--json", "--sort", "size"}, error);
    ASSERT_TRUE(parsed) << error;
    EXPECT_EQ(parsed->words, std::vector<DString>{"a"});
    EXPECT_TRUE(parsed->Has("--json"));
    EXPECT_EQ(parsed->All("--sort"), (std::vector<DString>{"name", "size"}));
    EXPECT_EQ(parsed->Value("--sort"), "size");
    auto const behind = ParseArguments(kSpec, {"--", "--json"}, error);
    ASSERT_TRUE(behind) << error;
    EXPECT_EQ(behind->words, std::vector<DString>{"--json"});
    EXPECT_FALSE(behind->Has("--json"));
}

TEST(CommandLine, WhatDoesNotFitIsRefusedWithAReason) {
    for (std::vector<DString> const &words :
         {std::vector<DString>{}, {"a", "b", "c"}, {"a", "--sort"}, {"a", "--jsno"}, {"a", "--json=1"}}) {
        DString error;
        EXPECT_FALSE(ParseArguments(kSpec, words, error)) << (words.empty() ? "" : words.back());
        EXPECT_NE(error, "");
    }
}

TEST(CommandLine, ASizeIsTwoWholeNumbersWithinReason) {
    ASSERT_TRUE(ParseSize("640x480"));
    EXPECT_EQ(ParseSize("640x480")->width, 640);
    EXPECT_EQ(ParseSize("640x480")->height, 480);
    for (char const *bad : {"", "640", "640x", "x480", "0x480", "640x-1", "640x480x", "99999x1", "6 40x4"})
        EXPECT_FALSE(ParseSize(bad)) << bad;
}

TEST(CommandTable, ABashCompletesWhatTheTableHolds) {
    test::TempFolder const folder;
    folder.Write("zelvar.bash", BashCompletion());
    for (auto const &[words, offered] : std::initializer_list<std::pair<std::string, std::string>>{
             {"pl", "plot"}, {"open --for ra", "raster"}, {"ls --rec", "--recursive"}, {"ls fi", ""}}) {
        std::string const script = ". " + (folder / "zelvar.bash") + "; COMP_WORDS=(zelvar " + words +
                                   "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _zelvar; printf %s \"${COMPREPLY[*]}\"";
        std::string const line = "bash -c " + test::Quoted(script) + " >" + (folder / "out");
        EXPECT_EQ(std::system(line.c_str()), 0); // NOLINT(cert-env33-c,concurrency-mt-unsafe): a shell is asked
        EXPECT_EQ(test::ReadFile(folder / "out"), offered) << words;
    }
}

TEST(CommandTable, LinesOfTheUsageFitAScreen) {
    DString texts = UsageText();
    for (CommandSpec const &spec : AllCommands())
        texts += HelpText(spec);
    std::size_t longest = 0;
    for (DString const &line : Split(texts, '\n'))
        longest = std::max(longest, line.size());
    EXPECT_TRUE(longest > 90 && longest <= 100) << longest;
    CommandSpec const &open = SpecOf("open");
    EXPECT_TRUE(HelpText(open).starts_with("usage: zelvar open [PLACE] [--for KIND] "));
    EXPECT_NE(HelpText(open).find("\n       [--"), DString::npos) << "further lines stand below the first word";
    EXPECT_NE(HelpText(SpecOf("table")).find("\n  --layer NAME          of a file"), DString::npos);
}

TEST(CommandTable, ManualPagesTellEachOptionAndHideNoMacro) {
    CommandSpec const odd{.name = "odd", .about = ".Begins so. It's \\ odd.", .options = {{"--a-b", "N", "'quoted'"}}};
    std::string const page = ManualPage(odd, "1.2");
    EXPECT_NE(page.find("\n\\&.Begins so. It's \\e odd.\n"), std::string::npos) << page;
    EXPECT_NE(page.find("\n\\fB\\-\\-a\\-b\\fR \\fIN\\fR\n\\&'quoted'.\n"), std::string::npos) << page;
    EXPECT_NE(page.find(".SH OPTIONS\n"), std::string::npos);
    EXPECT_EQ(ManualPage(CommandSpec{.name = "plain", .about = "Nothing to choose."}, "1").find("OPTIONS"),
              std::string::npos);
}

} // namespace
} // namespace zelvar::tool
