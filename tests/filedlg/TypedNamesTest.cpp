#include "zelvar/filedlg/core/TypedNames.h"

#include "support/Test.h"

namespace zelvar {
namespace {

using Names = std::vector<DString>;

TEST(TypedNames, SeveralStandInQuotes) {
    EXPECT_EQ(SplitTypedNames(" a b.tif "), Names{"a b.tif"});
    EXPECT_EQ(SplitTypedNames(R"("a b.tif"  "c.tif")"), (Names{"a b.tif", "c.tif"}));
    EXPECT_EQ(SplitTypedNames(R"("a.tif" c d)"), (Names{"a.tif", "c d"}));
    EXPECT_EQ(SplitTypedNames(R"("a.tif" "c)"), (Names{"a.tif", R"("c)"})) << "a quote that stays open";
    EXPECT_EQ(SplitTypedNames(R"(5" disc)"), Names{R"(5" disc)"});
    EXPECT_EQ(SplitTypedNames(R"("")"), Names{});
    EXPECT_EQ(SplitTypedNames("  "), Names{});
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
    EXPECT_EQ(AbsolutePath("/data", "x.tif"), "/data/x.tif");
    EXPECT_EQ(AbsolutePath("/data/a", "../b//./x.tif"), "/data/b/x.tif");
    EXPECT_EQ(AbsolutePath("/data", "/etc/"), "/etc");
    EXPECT_EQ(AbsolutePath("/data", ".."), "/");
    EXPECT_EQ(AbsolutePath("/", "../.."), "/");
    EXPECT_EQ(AbsolutePath("/data", "."), "/data");
    EXPECT_EQ(AbsolutePath("/caf\xe9", "\xff"), "/caf\xe9/\xff") << "bytes stay what they are";
}

} // namespace
} // namespace zelvar
