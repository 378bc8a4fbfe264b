#include "support/RunCommand.h"
#include "support/Test.h"

#include <filesystem>

namespace zelvar {
namespace {

using test::Outcome;

Outcome Ask(std::vector<std::string> words) {
    words.insert(words.begin(), "ask");
    return test::Zelvar(words, "QT_QPA_PLATFORM=offscreen");
}

TEST(AskCommand, PrintsTheButtonAndTheCheckMark) {
    test::Rows<std::vector<std::string>, int, char const *> const cases = {
        {{"Go on?", "--press", "ok"}, 0, "ok\n"},
        {{"Go on?", "--buttons", "yes-no", "--press", "no"}, 0, "no\n"},
        {{"Go on?", "--buttons", "yes-no-cancel", "--press", "cancel"}, 1, "cancel\n"},
        {{"Exists.", "--buttons=keep", "--press=keep-existing"}, 0, "keep-existing\n"},
        {{"Exists.", "--buttons=keep", "--press=keep-both", "--default", "3"}, 0, "keep-both\n"},
        {{"Go on?", "--buttons", "continue-abort", "--icon", "warning", "--press", "continue", "--help-id", "7"},
         0,
         "continue\n"},
        {{"--dont-ask", "Go on?", "--press", "ok"}, 0, "ok\tunchecked\n"},
        {{"Go on?", "--dont-ask=Never again", "--check", "--press", "ok"}, 0, "ok\tchecked\n"},
        {{"Go on?", "--dont-ask", "Never again", "--check", "--press", "ok"}, 0, "ok\tchecked\n"},
        {{"--dont-ask", "Never again", "Go on?", "--press", "ok"}, 0, "ok\tunchecked\n"},
        {{"-", "--press", "ok"}, 0, "ok\n"}, // an empty standard input
        {{"--press", "ok", "--", "--text"}, 0, "ok\n"}};
    for (auto const &[words, exitCode, out] : cases) {
        Outcome const outcome = Ask(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << out << outcome.err;
        EXPECT_EQ(outcome.out, out);
        EXPECT_EQ(outcome.err, "");
    }
}

TEST(AskCommand, WithoutAScreenItEndsAndSaysWhy) {
    test::TempFolder const folder;
    DString const shot = folder / "ask.png";
    Outcome const outcome = Ask({"Which of them?", "--buttons", "yes-no", "--icon", "question",
                                 "--dont-ask=Keep asking", "--caption", "Import", "--shot", shot});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("nobody can answer"));
    EXPECT_GT(std::filesystem::file_size(shot), 500U);
    EXPECT_EQ(Ask({"Ok?", "--press", "ok", "--shot", "/nowhere/a.png"}).exitCode, 3);
}

TEST(AskCommand, WhatIsWrongIsTold) {
    test::Rows<std::vector<std::string>, char const *> const cases = {
        {std::vector<std::string>(), "an argument is missing"},
        {{"t", "--buttons", "maybe"}, "abort-retry-ignore"},
        {{"t", "--icon", "smile"}, "stop, question"},
        {{"t", "--default", "0"}, "--default is a number from 1 to 16"},
        {{"t", "--help-id", "7x"}, "--help-id is a number"},
        {{"t", "--check"}, "--check needs --dont-ask"},
        {{"t", "--buttons", "yes-no", "--press", "ok"}, "--press is one of yes, no"},
        {{"t", "--dont-ask", "a", "b"}, "too many arguments"},
        {{"t", "a", "--dont-ask"}, "too many arguments"},
        {{"t", "--check=1"}, "unknown option --check"}};
    for (auto const &[words, says] : cases) {
        Outcome const outcome = Ask(words);
        EXPECT_EQ(outcome.exitCode, 2) << says;
        EXPECT_THAT(outcome.err, HasSubstr(says));
    }
}

} // namespace
} // namespace zelvar
