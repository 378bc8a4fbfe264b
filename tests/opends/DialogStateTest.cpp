#include "zelvar/opends/core/DialogState.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(DialogState, SortingSurvivesTheRoundTrip) {
    DialogSorting const sorting{.foldersAscending = false, .column = 2, .mainAscending = false};
    EXPECT_EQ(SortingToText(sorting), "DSC:ASC:2:DSC");
    EXPECT_EQ(SortingFromText("DSC:ASC:2:DSC"), sorting);
}

TEST(DialogState, OnlyTheWholeShapeIsReadAndOnlyDscDescends) {
    EXPECT_EQ(SortingFromText("abc:xyz:1:dsc"), (DialogSorting{.column = 1}));
    for (char const *bad : {"", "true", "false", "ASC:ASC:3:ASC", "ASC:ASC:0:AS", "ASC:ASC:0:ASCD", "AS1:ASC:0:ASC"})
        EXPECT_FALSE(SortingFromText(bad)) << bad;
}

TEST(DialogState, TypedPathsAreFixedUpToTheFirstColonOrQuestionMark) {
    test::Rows<char const *, PathStyle, char const *> const cases = {
        {"", PathStyle::Windows(), ""},
        {"  /home/a b/ \t", PathStyle::Native(), "/home/a b/"},
        {"//server/share/x", PathStyle::Windows(), R"(\\server\share\x)"},
        {"dir/a?b/c", PathStyle::Windows(), "dir\\a?b/c"},
        {"http://host/x", PathStyle::Windows(), "http://host/x"},
        {"http://host/x", PathStyle::Native(), "http://host/x"}};
    for (auto const &[typed, style, fixed] : cases)
        EXPECT_EQ(FixTypedPath(typed, style), fixed) << typed;
}

} // namespace
} // namespace zelvar
