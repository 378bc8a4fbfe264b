#include "zelvar/base/NaturalOrder.h"

#include "support/Test.h"

#include <random>

namespace zelvar {
namespace {

int SignOf(int value) { return (value > 0) - (value < 0); }

int CompareKeys(std::string_view a, std::string_view b) {
    return SignOf(MakeFileNameKey(a).compare(MakeFileNameKey(b)));
}

TEST(NaturalOrder, NumbersBlanksAndCaseFollowTheRule) {
    test::Rows<char const *, char const *, char const *, int> const cases = {
        {"by value, not by digits", "img9", "img10", -1},
        {"same value, then text", "img10b", "img10a", 1},
        {"case is passed over", "IMG2", "img2", 0},
        {"capital letters stand before the underscore", "a", "_", -1},
        {"a run that begins with 0 is a fraction", "1.05", "1.5", -1},
        {"fractions compare digit by digit", "0.010", "0.1", -1},
        {"more digits of the same fraction come later", "x01", "x010", -1},
        {"a fraction against a number compares as fraction", "x09", "x1", -1},
        {"long numbers do not overflow", "99999999999999999999999998", "99999999999999999999999999", -1},
        {"eight digits against nine", "99999999", "100000000", -1},
        {"blanks are passed over", " a  b ", "ab", 0},
        {"blanks part numbers", "1 2", "12", -1},
        {"the start of a text comes first", "img", "img1", -1},
        {"digits before letters", "1", "a", -1},
        {"two pairs of letters outside ASCII", "\xC3\x84pfel", "\xC3\xA4pfel", 0},
        {"nothing against nothing", "", " ", 0}};
    for (auto const &[name, a, b, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(NaturalCompare(a, b), expected);
        EXPECT_EQ(NaturalCompare(b, a), -expected);
    }
}

TEST(NaturalOrder, FileNamesCompareTheStemAndThenTheExtension) {
    test::Rows<char const *, char const *, char const *, int> const cases = {
        {"the stem decides", "a2.zzz", "a10.aaa", -1},
        {"then the extension", "a.tif", "a.TIFF", -1},
        {"none before any", "a", "a.", -1},
        {"an extension does not take part in the stem", "a.b", "a b", -1},
        {"a leading dot begins none", ".tif", ".tif.gz", -1},
        {"only the last dot counts", "a.1.tif", "a.1", 1},
        {"what stands before the dot is of the stem alone", "a .b", "a.a", 1},
        {"a byte that is no character stands behind all of them", "\xC3\xA4", "\x80", -1}};
    for (auto const &[name, a, b, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(CompareFileNames(a, b), expected);
        EXPECT_EQ(CompareKeys(a, b), expected);
        EXPECT_EQ(CompareKeys(b, a), -expected);
    }
}

/// Names from few characters, so that equal starts are frequent, with all that the rule treats in its own way.
class NameMaker {
public:
    DString Make() {
        static constexpr std::string_view pieces[] = {
            "a", "A",        "b", "0",  "00",   "1",   "12",       " ",        ".",    "_",           "\xC3\xA4",
            "~", "\xC3\x84", "9", "\t", "\xC3", "123", "99999999", "12345678", "\xFF", "\xE1\xB8\x81"};
        DString name;
        for (std::size_t count = m_random() % 9; count > 0; --count)
            name += pieces[m_random() % std::size(pieces)];
        if (m_random() % 64 == 0)
            name += DString(200 + m_random() % 400, m_random() % 2 == 0 ? '7' : '0');
        return name;
    }

private:
    std::mt19937 m_random{20240229}; // NOLINT(cert-msc51-cpp): the same names in every run
};

TEST(NaturalOrder, KeysOfRandomNamesAgreeWithTheComparison) {
    NameMaker maker;
    for (int round = 0; round < 300'000; ++round) {
        DString const a = maker.Make();
        DString const b = maker.Make();
        ASSERT_EQ(SignOf(CompareFileNames(a, b)), CompareKeys(a, b))
            << testing::PrintToString(a) << " and " << testing::PrintToString(b);
    }
}

} // namespace
} // namespace zelvar
