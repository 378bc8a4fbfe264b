#include "zelvar/base/DString.h"

#include <gtest/gtest.h>

namespace zelvar {
namespace {

TEST(DString, CaseIsPassedOverInLatinGreekAndCyrillic) {
    EXPECT_TRUE(EqualNoCase("Desktop", "dESKTOP"));
    EXPECT_TRUE(EqualNoCase("\xC3\x84\xC5\xBE\xCE\xA9\xD0\x96", "\xC3\xA4\xC5\xBD\xCF\x89\xD0\xB6"));
    EXPECT_FALSE(EqualNoCase("\xC3\x97", "\xC3\xB7")); // the multiplication sign and the division sign are no pair
    EXPECT_FALSE(EqualNoCase("a", "ab"));
    EXPECT_TRUE(EqualNoCase("\xFF\xC3", "\xFF\xC3"));
    EXPECT_EQ(FoldCase("a\xC3\xA4\xFF"), FoldCase("A\xC3\x84\xFF"));
    EXPECT_TRUE(StartsWithNoCase("installdirs", "InstallDir"));
    EXPECT_FALSE(StartsWithNoCase("install", "InstallDir"));
}

TEST(DString, FormatsTextsLongerThanItsBuffer) {
    DString const text(5000, 'x');
    EXPECT_EQ(Format("<%s>", text.c_str()), "<" + text + ">");
    EXPECT_EQ(Format("%s", ""), "");
}

TEST(DString, FormatsNumbersWithAPoint) {
    EXPECT_EQ(FormatDouble(2.5, 0), "2");
    EXPECT_EQ(FormatDouble(-0.005, 3), "-0.005");
    EXPECT_EQ(FormatDouble(1e308, 2).size(), 312U);
}

TEST(DString, SplitsKeepingEmptyPiecesAndJoinsLeavingThemOut) {
    EXPECT_EQ(Split("a;;b", ';'), (std::vector<DString>{"a", "", "b"}));
    EXPECT_EQ(Split("", ';'), std::vector<DString>{""});
    EXPECT_EQ(JoinNotEmpty({"", "a", "", "b"}, ';'), "a;b");
    EXPECT_EQ(Trimmed(" \t a b\r\n"), "a b");
}

TEST(DString, BytesThatAreNotUtf8AreReplacedOneByOne) {
    EXPECT_EQ(ToValidUtf8("\xC3\xA4\xC3(\xED\xA0\x80\xF5"),
              "\xC3\xA4\xEF\xBF\xBD(\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(EscapeControlBytes("a\tb\n\x7F\xC3\xA4\\"), "a\\x09b\\x0A\\x7F\xC3\xA4\\");
}

} // namespace
} // namespace zelvar
