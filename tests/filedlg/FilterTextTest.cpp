#include "zelvar/filedlg/core/FilterText.h"

#include "support/Test.h"

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

TEST(FilterText, MasksStandBehindADescriptionThatDoesNotNameThem) {
    EXPECT_EQ(ShownFilter({"Shape files", "*.shp"}), "Shape files (*.shp)");
    EXPECT_EQ(ShownFilter({"Shape files (*.shp)", "*.shp"}), "Shape files (*.shp)");
    EXPECT_EQ(ShownFilter({"", "*.shp"}), "*.shp");
    EXPECT_EQ(ShownFilter({"All rule sets", ""}), "All rule sets");
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

} // namespace
} // namespace zelvar::test
