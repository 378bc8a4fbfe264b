#include "support/RunCommand.h"
#include "support/TableFiles.h"
#include "support/Test.h"

namespace zelvar {
namespace {

using test::Outcome;
using test::Zelvar;

constexpr char kOffscreen[] = "QT_QPA_PLATFORM=offscreen";

struct TableCommand : testing::Test {
    test::TempFolder m_folder;
    DString m_table = m_folder.Write("t.csv", "name,x\nb,10\n,9\n\"a\tA\r\n\",-2\n\xFF,\n");
};

TEST_F(TableCommand, PrintsRowsAsTheFileHasThemOrSorted) {
    std::string const b = "b\t10";
    std::string const none = "\t9";
    std::string const a = "a\\x09A\\x0D\\x0A\t-2";
    std::string const wrong = "\xC3\xBF\t"; // in windows-1252
    using Words = std::vector<std::string>;
    test::Rows<Words, Words> const cases = {{Words(), {b, none, a, wrong}},
                                            {{"--rows", "2"}, {b, none}},
                                            {{"--sort", "x"}, {b, none, wrong, a}},
                                            {{"--sort", "x", "--descending"}, {a, wrong, none, b}},
                                            {{"--sort", "1"}, {none, a, b, wrong}},
                                            {{"--sort", "ID"}, {wrong, a, none, b}},
                                            {{"--sort", "x", "--rows", "2", "--descending"}, {none, b}},
                                            {{"--select", "2"}, {a}},
                                            {{"--select", "1", "--sort", "x"}, {none}}};
    for (auto const &[options, rows] : cases) {
        std::string expected = "name\tx\n";
        for (std::string const &row : rows)
            expected += row + "\n";
        std::vector<std::string> words{"table", m_table, "--print"};
        words.insert(words.end(), options.begin(), options.end());
        Outcome const outcome = Zelvar(words);
        EXPECT_EQ(outcome.out, expected) << testing::PrintToString(options);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    }
}

TEST_F(TableCommand, LayersAreChosenByName) {
    DString const book = m_folder / "t.gpkg";
    test::ConvertTable(m_table, book, "GPKG");
    EXPECT_EQ(Zelvar({"table", book, "--layer", "t", "--print", "--rows", "1"}).out, "name\tx\nb\t10\n");
    EXPECT_EQ(Zelvar({"table", book, "--layer", "u", "--print"}).exitCode, 3);
    for (char const *odd : {"2x", "x", "", "-1", "99999999999"})
        EXPECT_EQ(Zelvar({"table", book, "--print", "--rows", odd}).exitCode, 2) << odd;
}

TEST_F(TableCommand, PicturesShowWhatIsAskedForWithoutAScreen) {
    DString const shot = m_folder / "t.png";
    std::set<std::string> pictures;
    for (char const *options : {"--rows 9", "--rows 2", "--sort x", "--sort x --descending", "--select 2",
                                "--sort x --select 2", "--size 300x150"}) {
        std::vector<DString> words = Split(options, ' ');
        words.insert(words.begin(), {"table", m_table, "--shot", shot, "--size", "300x200"});
        Outcome const outcome = Zelvar(words, kOffscreen);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_TRUE(pictures.insert(test::ReadFile(shot)).second) << options;
    }
}

TEST_F(TableCommand, WhatCannotBeDoneIsTold) {
    DString const empty = m_folder.Write("empty.csv", "a,b\n");
    for (auto const &[options, exitCode, says, prints] :
         test::Rows<std::vector<std::string>, int, char const *, char const *>{
             {{m_folder / "none.csv", "--print"}, 3, "none.csv", ""},
             {{m_folder / "none.csv"}, 3, "none.csv", ""},
             {{m_table, "--sort", "z", "--print"}, 3, "there is no column 'z'", ""},
             {{m_table, "--descending"}, 2, "--sort", ""},
             {{m_table, "--rows", "-1"}, 2, "from 0", ""},
             {{m_table, "--size", "big"}, 2, "640x480", ""},
             {{m_table, "--select", "4"}, 1, "no row 4", ""},
             {{m_table, "--select", "4", "--print"}, 1, "", "name\tx\n"},
             {{empty, "--print"}, 1, "", "a\tb\n"},
             {{m_table, "--shot", "/nowhere/a.png"}, 3, "cannot write", ""}}) {
        std::vector<std::string> words{"table"};
        words.insert(words.end(), options.begin(), options.end());
        Outcome const outcome = Zelvar(words, kOffscreen);
        EXPECT_EQ(outcome.exitCode, exitCode) << says;
        EXPECT_THAT(outcome.err, HasSubstr(says));
        EXPECT_EQ(outcome.out, prints);
    }
}

} // namespace
} // namespace zelvar
