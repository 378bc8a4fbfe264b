// What the fields of a file dialog are given and hold: filters and names.
#include "support/Test.h"
#include "zelvar/filedlg/core/FilterBuffer.h"
#include "zelvar/filedlg/core/FilterText.h"
#include "zelvar/filedlg/core/TypedNames.h"

namespace zelvar::test {
namespace {

TEST(FilterText, FieldsComeInPairsUntilTheEmptyOne) {
    using Filters = std::vector<FileFilter>;
    Filters const two{{"Tagged image files", "*.tif;*.tiff"}, {"All Files", "*.*"}};
    Rows<char const *, Filters> const cases = {
        {"Tagged image files|*.tif;*.tiff|All Files|*.*||", two},
        {"Tagged image files|*.tif;*.tiff|All Files|*.*", two}, // the end ends it too
        {"A|*.a|||B|*.b||", {{"A", "*.a"}}},                    // nothing is read behind the end
        {"All rule sets|||", {{"All rule sets", ""}}},
        {"|*.dat|All Files|*.*||", {{"", "*.dat"}, two[1]}}, // a format without a name keeps its place
        {"Odd", {{"Odd", ""}}},
        {"", {}},
        {"||", {}}};
    for (auto const &[text, filters] : cases)
        EXPECT_EQ(ParseFilterText(text), filters) << text;
}

TEST(FilterText, AMaskThatEveryNamePassesLeavesNone) {
    EXPECT_THAT(SingleMasks("*.tif; *.tiff ;;"), ElementsAre("*.tif", "*.tiff"));
    for (char const *masks : {"*.tif;*.*", "*", ""})
        EXPECT_TRUE(SingleMasks(masks).empty()) << masks;
}

TEST(FilterText, TheDefaultExtensionIsThatOfTheChosenFilter) {
    Rows<char const *, char const *, char const *> const cases = {
        {"", "*.*", ""},      {"*.tif;*.*", "csv", ""},        {"*.*", "txt", ""},      {"report*", "txt", "txt"},
        {"", ".txt", "txt"},  {"*.tar.gz", "", "tar.gz"},      {"", "*.txt", "txt"},    {"*.tif;*.tiff", "txt", "tif"},
        {"*.", "txt", "txt"}, {"*.t?f;*.tiff", "txt", "tiff"}, {"", "tar.gz", "tar.gz"}};
    for (auto const &[masks, given, expected] : cases)
        EXPECT_EQ(DefaultExtension(masks, given), expected) << masks << " and " << given;
}

TEST(FilterBuffer, HoldsTheFormatsInTheirOrder) {
    FilterBuffer buffer;
    buffer.InitFilter();
    EXPECT_TRUE(buffer.Add(DFileFrmt("", "All Files", "*.*")) && buffer.Add(DFileFrmt(nullptr, "A|B", "*.a;*.b")));
    buffer.FinishFilter();
    EXPECT_STREQ(buffer.Text(), "All Files|*.*|A B|*.a;*.b||");
    buffer.InitFilter();
    buffer.FinishFilter();
    EXPECT_STREQ(buffer.Text(), "|");
}

TEST(FilterBuffer, IsFullAtItsSizeAndTakesNothingInPart) {
    // "name|*.x|" and the two bytes at the end
    std::size_t const room = FilterBuffer::kSize - DString("|*.x|").size() - 2;
    for (std::size_t const more : {0U, 1U}) {
        FilterBuffer buffer;
        buffer.InitFilter();
        EXPECT_EQ(buffer.Add(DFileFrmt("", DString(room + more, 'n').c_str(), "*.x")), more == 0);
        EXPECT_FALSE(buffer.Add(DFileFrmt("", "z", "*.z"))) << "its place in the list would be another's";
        buffer.FinishFilter();
        EXPECT_EQ(std::strlen(buffer.Text()), more == 0 ? FilterBuffer::kSize - 1 : 1);
        buffer.InitFilter();
        EXPECT_TRUE(buffer.Add(DFileFrmt("", "z", "*.z")));
    }
}

TEST(FilterBuffer, TheEntryOfAnExtensionIsTheFirstWhosePatternHoldsIt) {
    char const *const three = "Text|*.txt|Tables|*.csv;*.tsv|All|*.*||";
    Rows<char const *, char const *, int> const cases = {
        {"", "", 0},       {three, "*.txt", 0}, {"Text|*.txt||", "", 0},
        {"Text", "", 1},   {three, "*.tsv", 1}, {"None||Text|*.txt||", "", 1},
        {three, "csv", 1}, {three, "*.gif", 3}, {"Text (*.csv)|*.txt|Tables|*.csv||", "*.csv", 1}};
    for (auto const &[filter, extension, index] : cases)
        EXPECT_EQ(IndexOfPattern(filter, extension), index) << filter << " " << extension;
}

using Names = std::vector<DString>;

TEST(TypedNames, SeveralStandInQuotes) {
    EXPECT_EQ(SplitTypedNames(" a b.tif "), Names{"a b.tif"});
    EXPECT_EQ(SplitTypedNames(R"("a b.tif"  "c.tif")"), (Names{"a b.tif", "c.tif"}));
    EXPECT_EQ(SplitTypedNames(R"("a.tif" c d)"), (Names{"a.tif", "c d"}));
    EXPECT_EQ(SplitTypedNames(R"("a.tif" "c)"), (Names{"a.tif", R"("c)"})) << "a quote that stays open";
    EXPECT_EQ(SplitTypedNames(R"(5" disc)"), Names{R"(5" disc)"});
    EXPECT_EQ(SplitTypedNames(R"("")"), Names{});
}

TEST(TypedNames, AnExtensionIsAddedWhereThereIsNone) {
    char const *const masks = "*.csv; *.t?r;*.*;2*";
    EXPECT_EQ(WithExtension("/a.b/report", "txt", masks), "/a.b/report.txt");
    for (char const *whole : {"/a.b/report.csv", "/report.TXT", "/report.tar", "/a/report."}) // a dot asks for none
        EXPECT_EQ(WithExtension(whole, "txt", masks), whole);
    for (DString const name : {"/Run 1.2", "/a/.hidden", "/a/.csv", "/a.csv/b"})
        EXPECT_EQ(WithExtension(name, "txt", masks), name + ".txt");
    EXPECT_EQ(WithExtension("/a/report", "", masks), "/a/report");
}

TEST(TypedNames, AnotherFilterReplacesTheExtensionOfTheFormerOneOnly) {
    EXPECT_EQ(ForOtherFilter("report.txt", "*.txt", "csv"), "report.csv");
    EXPECT_EQ(ForOtherFilter("report.TXT", "*.asc;*.txt", "csv"), "report.csv");
    EXPECT_EQ(ForOtherFilter("report.v2", "*.txt", "csv"), "report.v2") << "no extension of the filter";
    EXPECT_EQ(ForOtherFilter("report", "*.txt", "csv"), "report");
    EXPECT_EQ(ForOtherFilter("report.txt", "*.*", "csv"), "report.txt");
    EXPECT_EQ(ForOtherFilter("report.txt", "*.txt", ""), "report.txt");
}

TEST(TypedNames, APathBeginsAtTheFolderOrAtTheRoot) {
    EXPECT_EQ(AbsolutePath("/data/a", "../b//./x/"), "/data/b/x");
    EXPECT_EQ(AbsolutePath("/data", "/etc/../.."), "/");
    EXPECT_EQ(AbsolutePath("/caf\xe9", "\xff"), "/caf\xe9/\xff") << "bytes stay what they are";
}

} // namespace
} // namespace zelvar::test
