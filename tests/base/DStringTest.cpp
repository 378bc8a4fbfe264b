#include "zelvar/base/DString.h"

#include "support/Test.h"
#include "zelvar/base/ByteEscapes.h"

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

TEST(DString, EachCaseFormFoldsToOneAndFoldingAgainChangesNothing) {
    test::Rows<char const *, char const *, char const *> const cases = {
        {"y with diaeresis, two blocks apart", "\xC3\xBF", "\xC5\xB8"},
        {"d with stroke", "\xC4\x91", "\xC4\x90"},
        {"final sigma", "\xCF\x82", "\xCE\xA3"},
        {"alpha with tonos", "\xCE\xAC", "\xCE\x86"},
        {"io", "\xD1\x91", "\xD0\x81"},
        {"palochka", "\xD3\x8F", "\xD3\x80"},
        {"o with horn and hook", "\xE1\xBB\x9F", "\xE1\xBB\x9E"}};
    for (auto const &[name, small, capital] : cases) {
        EXPECT_TRUE(EqualNoCase(small, capital)) << name;
        EXPECT_EQ(FoldCase(small), FoldCase(capital)) << name;
    }
    EXPECT_FALSE(EqualNoCase("\xC4\xB0", "\xC4\xB1")); // the dotted and the dotless i of Turkish are no pair
    for (unsigned code = 0x80; code < 0x800; ++code) {
        DString const text{static_cast<char>(0xC0U | code >> 6U), static_cast<char>(0x80U | (code & 0x3FU))};
        DString const folded = FoldCase(text);
        ASSERT_EQ(FoldCase(folded), folded) << std::hex << code;
        ASSERT_EQ(ToValidUtf8(folded), folded) << std::hex << code;
        ASSERT_TRUE(EqualNoCase(text, folded)) << std::hex << code;
    }
}

TEST(DString, FormatsAcrossTheEdgeOfItsBuffer) {
    for (std::size_t const length : {0U, 510U, 511U, 512U, 513U, 5000U}) {
        DString const text(length, 'x');
        EXPECT_EQ(Format("%s", text.c_str()), text);
    }
}

TEST(DString, NumbersBeyondAllMeasureAreWrittenToo) {
    EXPECT_EQ(FormatDouble(std::numeric_limits<double>::quiet_NaN(), 2), "nan");
    EXPECT_EQ(FormatDouble(-std::numeric_limits<double>::infinity(), 2), "-inf");
    EXPECT_EQ(FormatDouble(1.5, -3), "2");
    EXPECT_EQ(FormatDouble(2.5, 0), "2");
    EXPECT_EQ(FormatDouble(-0.005, 3), "-0.005");
    EXPECT_EQ(FormatDouble(0.5, 1000).size(), 102U);
    EXPECT_EQ(FormatDouble(-std::numeric_limits<double>::max(), 100).size(), 411U);
}

TEST(DString, ValidUtf8IsKeptAndTheRestReplacedByteByByte) {
    // The first and last of each length, surrogates, what is cut off, what is never a byte of UTF-8; -1 where all is
    // kept as it is.
    test::Rows<std::string_view, int> const cases = {{"\xF4\x8F\xBF\xBF", -1},
                                                     {"\xF4\x90\x80\x80", 4},
                                                     {"\xC1\xA1", 2},
                                                     {"\xE0\x9F\xBF", 3},
                                                     {"\xF0\x8F\xBF\xBF", 4},
                                                     {"\xED\x9F\xBF", -1},
                                                     {"\xE2", 1},
                                                     {"\xE2\x82", 2},
                                                     {"\xF0\x9F\x98", 3},
                                                     {"\x80", 1},
                                                     {"\xFE\xFF", 2}};
    for (auto const &[bytes, replaced] : cases) {
        DString expected(replaced < 0 ? bytes : "");
        for (int i = 0; i < replaced; ++i)
            expected += "\xEF\xBF\xBD";
        EXPECT_EQ(ToValidUtf8(bytes), expected) << EscapeToUtf8(bytes);
    }
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
    EXPECT_EQ(EscapeToUtf8("\xC3\xA4\n\\x41"), "\xC3\xA4\n\\x41");
    EXPECT_EQ(EscapeToUtf8("\xEF\xBF\xBD\xFF\\x41\\"), "\xEF\xBF\xBD\\xFF\\x5Cx41\\");
    for (std::string_view const name : {"a\nb", "\\x0A", "\\\\x0a\\x", "\xFF\xEF\xBF\xBD\\x5C"}) {
        EXPECT_EQ(UnescapeBytes(EscapeControlBytes(name)), name);
        EXPECT_TRUE(name.front() != '\xFF' || UnescapeBytes(EscapeToUtf8(name)) == name);
    }
}

} // namespace
} // namespace zelvar
