#include "support/ImageFiles.h"
#include "support/RunCommand.h"
#include "support/Test.h"

#include <filesystem>

namespace zelvar {
namespace {

using test::Outcome;
using test::Zelvar;

struct ChartCommands : testing::Test {
    test::TempFolder m_folder;
    DString m_table = m_folder.Write("t.csv", "name,x,y\r\na,1,10\r\nb,2,20\r\nc,,30\r\nd,4,none\r\ne,5,50\r\n");
};

TEST_F(ChartCommands, HistogramPrintsEdgesAndCountsOfABandOrAColumn) {
    DString const image = m_folder / "a.tif";
    test::WriteImage(image, {.width = 10, .height = 10, .channels = 2, .sample = [](int channel, int x, int) {
                                 return channel * 100 + x;
                             }});
    EXPECT_EQ(Zelvar({"histogram", image, "--print", "--slots", "3"}).out, "0\t4\t40\n4\t8\t40\n8\t12\t20\n");
    EXPECT_EQ(Zelvar({"histogram", image, "--band", "2", "--print", "--slots", "1"}).out, "100\t110\t100\n");
    EXPECT_EQ(Zelvar({"histogram", m_table, "--column", "y", "--print", "--slots", "2"}).out, "10\t31\t3\n31\t52\t1\n");
    EXPECT_EQ(Zelvar({"histogram", m_table, "--column", "2", "--print", "--slots", "1"}).out, "1\t6\t4\n");
    EXPECT_EQ(Zelvar({"histogram", m_table, "--column", "name", "--print"}).exitCode, 1); // no numbers
}

TEST_F(ChartCommands, PicturesShowWhatIsAskedForWithoutAScreen) {
    DString const shot = m_folder / "c.png";
    std::set<std::string> pictures;
    for (char const *command : {"histogram --column x", "histogram --column y", "histogram --column x --click 100,150",
                                "plot --x x --y y", "plot --x x --y y --line", "plot --x x --y y --size 310x200"}) {
        std::vector<DString> words = Split(command, ' ');
        words.insert(words.begin() + 1, {m_table, "--size", "300x200", "--shot", shot});
        Outcome const outcome = Zelvar(words, "QT_QPA_PLATFORM=offscreen");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_TRUE(pictures.insert(test::ReadFile(shot)).second) << command;
    }
    EXPECT_EQ(Zelvar({"plot", m_table, "--x", "name", "--y", "y"}, "QT_QPA_PLATFORM=offscreen").exitCode, 1);
}

TEST_F(ChartCommands, WhatIsClickedIsPrinted) {
    Outcome const histogram = Zelvar({"histogram", m_table, "--column", "x", "--slots", "2", "--click", "100,150",
                                      "--click", "230,150", "--click", "299,1", "--size", "300x200"},
                                     "QT_QPA_PLATFORM=offscreen");
    EXPECT_EQ(histogram.out, "1\t4\t2\n4\t7\t2\nnone\n") << histogram.err;
    Outcome const plot = Zelvar(
        {"plot", m_table, "--x", "x", "--y", "y", "--size", "400x300", "--click", "140,209", "--click", "380,30"},
        "QT_QPA_PLATFORM=offscreen");
    EXPECT_EQ(plot.out, "2\t2\t20\n5\t5\t50\n") << plot.err;
    EXPECT_EQ(Zelvar({"plot", m_table, "--x", "x", "--y", "y", "--click", "1;1"}).exitCode, 2);
}

TEST_F(ChartCommands, APageOfTheGalleryCanBeShown) {
    DString const shot = m_folder / "thematic.png";
    Outcome const outcome = Zelvar({"gallery", "--page", "thematic", "--shot", shot}, "QT_QPA_PLATFORM=offscreen");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_GT(std::filesystem::file_size(shot), 1000U);
}

TEST_F(ChartCommands, WhatCannotBeDoneIsTold) {
    test::Rows<std::vector<std::string>, int, char const *> const cases = {
        {{"histogram", m_folder / "none.tif", "--print"}, 3, "none.tif"},
        {{"histogram", m_table, "--column", "z", "--print"}, 3, "there is no column 'z'"},
        {{"histogram", m_table, "--slots", "0", "--print"}, 2, "counted from 1"},
        {{"histogram", m_table, "--band", "1", "--column", "x"}, 2, "bands or columns"},
        {{"histogram", m_table, "--size", "big"}, 2, "640x480"},
        {{"plot", m_table, "--x", "x"}, 2, "--y"},
        {{"gallery", "--page", "none"}, 2, "the pages are plot, histogram"},
        {{"plot", m_table, "--x", "x", "--y", "9"}, 3, "there is no column '9'"},
        {{"plot", m_folder / "none.csv", "--x", "x", "--y", "y"}, 3, "none.csv"},
        {{"plot", m_table, "--x", "x", "--y", "y", "--shot", "/nowhere/a.png"}, 3, "cannot write"}};
    for (auto const &[words, exitCode, says] : cases) {
        Outcome const outcome = Zelvar(words, "QT_QPA_PLATFORM=offscreen");
        EXPECT_EQ(outcome.exitCode, exitCode) << says;
        EXPECT_THAT(outcome.err, HasSubstr(says));
        EXPECT_EQ(outcome.out, "");
    }
}

} // namespace
} // namespace zelvar
