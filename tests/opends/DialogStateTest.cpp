#include "zelvar/opends/core/DialogState.h"

#include <gtest/gtest.h>

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
    struct Case {
        char const *typed;
        PathStyle style;
        char const *fixed;
    };
    Case const cases[] = {
        {"", PathStyle::Windows(), ""},
        {"  /home/a b/ \t", PathStyle::Native(), "/home/a b/"},
        {"//server/share/x", PathStyle::Windows(), R"(\\server\share\x)"},
        {"dir/a?b/c", PathStyle::Windows(), "dir\\a?b/c"},
        {"http://host/x", PathStyle::Windows(), "http://host/x"},
        {"http://host/x", PathStyle::Native(), "http://host/x"},
    };
    for (Case const &c : cases)
        EXPECT_EQ(FixTypedPath(c.typed, c.style), c.fixed) << c.typed;
}

} // namespace
} // namespace zelvar
