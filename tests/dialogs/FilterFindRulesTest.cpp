#include "zelvar/dialogs/core/FilterFindRules.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(AsciiCaseFinder, RegardsCaseOfOtherSignsAlone) {
    struct Case {
        char const *wanted;
        char const *text;
        bool isIn;
    };
    Case const cases[] = {
        {"", "", true},
        {"", "abc", true},
        {"a", "", false},
        {"BaN", "the bAnd 7", true},
        {"band 8", "Band 7", false},
        {"Ä", "ä", false},
        {"ä", "xäy", true},
        {"[", "{", false},
        {"abc", "ababc", true},
        {"@", "`", false},
    };
    for (Case const &c : cases)
        EXPECT_EQ(AsciiCaseFinder(c.wanted).IsIn(c.text), c.isIn) << c.wanted << " in " << c.text;
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
    EXPECT_FALSE(IsOnBoundary(96, 100));
    EXPECT_TRUE(IsOnBoundary(97, 100));
    EXPECT_TRUE(IsOnBoundary(103, 100));
    EXPECT_FALSE(IsOnBoundary(104, 100));
}

} // namespace
} // namespace zelvar
