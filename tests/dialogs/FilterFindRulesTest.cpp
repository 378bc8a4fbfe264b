#include "zelvar/dialogs/core/FilterFindRules.h"

#include "support/Test.h"

namespace zelvar::test {
namespace {

TEST(AsciiCaseFinder, RegardsCaseOfOtherSignsAlone) {
    Rows<char const *, char const *, bool> const cases = {
        {"", "", true},   {"", "abc", true}, {"BaN", "the bAnd 7", true}, {"abc", "ababc", true}, {"ä", "xäy", true},
        {"a", "", false}, {"Ä", "ä", false}, {"band 8", "Band 7", false}, {"[", "{", false},      {"@", "`", false}};
    for (auto const &[wanted, text, isIn] : cases)
        EXPECT_EQ(AsciiCaseFinder(wanted).IsIn(text), isIn) << wanted << " in " << text;
}

TEST(ListAndDescription, TheBoundaryMovesUntilOneOfThemWouldBeTooLow) {
    ListAndDescription const places{.list = {0, 10, 50, 100}, .text = {5, 120, 45, 160}, .frame = {0, 105, 50, 170}};
    EXPECT_EQ(DragBoundary(places, 100), std::nullopt);
    EXPECT_EQ(DragBoundary(places, 90), (ListAndDescription{{0, 10, 50, 90}, {5, 110, 45, 160}, {0, 95, 50, 170}}));
    EXPECT_EQ(DragBoundary(places, 129), (ListAndDescription{{0, 10, 50, 129}, {5, 149, 45, 160}, {0, 134, 50, 170}}));
    EXPECT_EQ(DragBoundary(places, 130), std::nullopt); // 10 pixels of description
    EXPECT_TRUE(DragBoundary(places, 21).has_value());
    EXPECT_EQ(DragBoundary(places, 20), std::nullopt); // 10 pixels of list
}

TEST(ListAndDescription, TheEdgeIsTakenHoldOfWithinThreePixels) {
    for (auto const &[at, isOn] : {std::pair{96, false}, {97, true}, {103, true}, {104, false}})
        EXPECT_EQ(IsOnBoundary(at, 100), isOn) << at;
}

} // namespace
} // namespace zelvar::test
