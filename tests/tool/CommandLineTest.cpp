#include "zelvar/tool/CommandLine.h"

#include "support/Test.h"

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
}

TEST(CommandLine, TwoDashesLetANameBeginWithDashes) {
    DString error;
    auto const parsed = ParseArguments(kSpec, {"--", "--json"}, error);
    ASSERT_TRUE(parsed) << error;
    EXPECT_EQ(parsed->words, std::vector<DString>{"--json"});
    EXPECT_FALSE(parsed->Has("--json"));
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

} // namespace
} // namespace zelvar::tool
