#include "zelvar/filedlg/core/FilterText.h"

#include "support/Test.h"

namespace zelvar {

namespace {

using Filters = std::vector<FileFilter>;

TEST(FilterText, FieldsComeInPairsUntilTheEmptyOne) {
    Filters const two{{"Tagged image files", "*.tif;*.tiff"}, {"All Files", "*.*"}};
    EXPECT_EQ(ParseFilterText("Tagged image files|*.tif;*.tiff|All Files|*.*||"), two);
    EXPECT_EQ(ParseFilterText("Tagged image files|*.tif;*.tiff|All Files|*.*"), two) << "the end ends it too";
    EXPECT_EQ(ParseFilterText("A|*.a|||B|*.b||"), (Filters{{"A", "*.a"}})) << "nothing is read behind the end";
    EXPECT_EQ(ParseFilterText("All rule sets|||"), (Filters{{"All rule sets", ""}}));
    EXPECT_EQ(ParseFilterText("|*.dat|All Files|*.*||"), (Filters{{"", "*.dat"}, {"All Files", "*.*"}}))
        << "a format without a name keeps its place";
    EXPECT_EQ(ParseFilterText("Odd"), (Filters{{"Odd", ""}}));
    EXPECT_EQ(ParseFilterText(""), Filters{});
    EXPECT_EQ(ParseFilterText("||"), Filters{});
}

TEST(FilterText, MasksStandBehindADescriptionThatDoesNotNameThem) {
    EXPECT_EQ(ShownFilter({"Shape files", "*.shp"}), "Shape files (*.shp)");
    EXPECT_EQ(ShownFilter({"Shape files (*.shp)", "*.shp"}), "Shape files (*.shp)");
    EXPECT_EQ(ShownFilter({"", "*.shp"}), "*.shp");
    EXPECT_EQ(ShownFilter({"All rule sets", ""}), "All rule sets");
}

TEST(FilterText, AMaskThatEveryNamePassesLeavesNone) {
    EXPECT_EQ(SingleMasks("*.tif; *.tiff ;;"), (std::vector<DString>{"*.tif", "*.tiff"}));
    for (char const *masks : {"*.tif;*.*", "*", ""})
        EXPECT_TRUE(SingleMasks(masks).empty()) << masks;
}

TEST(FilterText, TheDefaultExtensionIsThatOfTheChosenFilter) {
    struct Row {
        char const *masks;
        char const *given;
        char const *expected;
    };
    constexpr Row rows[] = {
        {"*.tif;*.tiff", "txt", "tif"},
        {"*.t?f;*.tiff", "txt", "tiff"},
        {"*.*", "txt", ""},
        {"", ".txt", "txt"},
        {"", "*.txt", "txt"},
        {"", "*.*", ""},
        {"", "tar.gz", "tar.gz"},
        {"*.tar.gz", "", "tar.gz"},
        {"report*", "txt", "txt"},
        {"*.tif;*.*", "csv", ""},
        {"*.", "txt", "txt"},
    };
    for (Row const &row : rows)
        EXPECT_EQ(DefaultExtension(row.masks, row.given), row.expected) << row.masks << " and " << row.given;
}

} // namespace
} // namespace zelvar
