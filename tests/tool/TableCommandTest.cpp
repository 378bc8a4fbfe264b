#include "support/RunCommand.h"
#include "support/TableFiles.h"
#include "support/TestFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace zelvar {
namespace {

using test::Outcome;
using test::Zelvar;
using testing::HasSubstr;

constexpr char kOffscreen[] = "QT_QPA_PLATFORM=offscreen";

class TableCommand : public testing::Test {
protected:
    test::TempFolder m_folder;
    DString m_table = m_folder.Write("t.csv", "name,x\nb,10\n,9\n\"a\tA\r\n\",-2\n\xFF,\n");
};

TEST_F(TableCommand, PrintsRowsAsTheFileHasThemOrSorted) {
    using Rows = std::vector<std::string>;
    struct Case {
        std::vector<std::string> options;
        Rows rows;
    };
    std::string const b = "b\t10";
    std::string const none = "\t9";
    std::string const a = "a\\x09A\\x0D\\x0A\t-2";
    std::string const wrong = "\xC3\xBF\t"; // in windows-1252
    for (Case const &c : {Case{{}, {b, none, a, wrong}},
                          {{"--rows", "2"}, {b, none}},
                          {{"--sort", "x"}, {b, none, wrong, a}},
                          {{"--sort", "x", "--descending"}, {a, wrong, none, b}},
                          {{"--sort", "1"}, {none, a, b, wrong}},
                          {{"--sort", "ID"}, {wrong, a, none, b}},
                          {{"--sort", "x", "--rows", "2", "--descending"}, {none, b}},
                          {{"--select", "2"}, {a}},
                          {{"--select", "1", "--sort", "x"}, {none}}}) {
        std::string expected = "name\tx\n";
        for (std::string const &row : c.rows)
            expected += row + "\n";
        std::vector<std::string> words{"table", m_table, "--print"};
        words.insert(words.end(), c.options.begin(), c.options.end());
        Outcome const outcome = Zelvar(words);
        EXPECT_EQ(outcome.out, expected) << testing::PrintToString(c.options);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    }
}

TEST_F(TableCommand, LayersAreChosenByName) {
    DString const book = m_folder / "t.gpkg";
    test::ConvertTable(m_table, book, "GPKG");
    EXPECT_EQ(Zelvar({"table", book, "--layer", "t", "--print", "--rows", "1"}).out, "name\tx\nb\t10\n");
    EXPECT_EQ(Zelvar({"table", book, "--layer", "u", "--print"}).exitCode, 3);
}

TEST_F(TableCommand, PicturesAreTakenWithoutAScreen) {
    DString const shot = m_folder / "t.png";
    Outcome const outcome =
        Zelvar({"table", m_table, "--sort", "x", "--select", "2", "--shot", shot, "--size", "300x200"}, kOffscreen);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_GT(std::filesystem::file_size(shot), 1000U);
}

TEST_F(TableCommand, WhatCannotBeDoneIsTold) {
    DString const empty = m_folder.Write("empty.csv", "a,b\n");
    struct Case {
        std::vector<std::string> words;
        int exitCode;
        char const *says;
        char const *prints;
    };
    for (Case const &c : {Case{{m_folder / "none.csv", "--print"}, 3, "none.csv", ""},
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
        words.insert(words.end(), c.words.begin(), c.words.end());
        Outcome const outcome = Zelvar(words, kOffscreen);
        EXPECT_EQ(outcome.exitCode, c.exitCode) << c.says;
        EXPECT_THAT(outcome.err, HasSubstr(c.says));
        EXPECT_EQ(outcome.out, c.prints);
    }
}

} // namespace
} // namespace zelvar
