#include "zelvar/opends/core/PathButtons.h"

#include "support/Test.h"

#include <numeric>

namespace zelvar {
namespace {

// Ten pixels a button, five more for each mark.
int Measure(std::size_t, bool cutBefore, bool cutBehind) { return 10 + (cutBefore ? 5 : 0) + (cutBehind ? 5 : 0); }

std::vector<std::size_t> Entries(std::vector<PathButton> const &buttons) {
    std::vector<std::size_t> entries;
    for (PathButton const &button : buttons)
        entries.push_back(button.entry);
    return entries;
}

TEST(PathButtons, ARowThatJustFitsIsShownWhole) {
    auto const buttons = ArrangePathButtons(4, 44, Measure);
    EXPECT_EQ(Entries(buttons), (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_EQ(buttons[3].left, 33);
    EXPECT_FALSE(buttons[0].cutBehind);
}

TEST(PathButtons, OnePixelLessCutsBehindTheOutermost) {
    auto const buttons = ArrangePathButtons(4, 43, Measure);
    ASSERT_EQ(Entries(buttons), (std::vector<std::size_t>{0, 2, 3}));
    EXPECT_TRUE(buttons[0].cutBehind);
    EXPECT_TRUE(buttons[1].cutBefore);
    EXPECT_FALSE(buttons[2].cutBefore);
    EXPECT_EQ(buttons[1].left, 16) << "43 - (15 + 15 + 10 + 3) - 2 leaves no room to spread";
}

TEST(PathButtons, RoomLeftByACutSpreadsBehindTheOutermostUpToFivePixels) {
    auto const roomy = [](std::size_t entry, bool cutBefore, bool cutBehind) {
        return entry == 1 ? 100 : Measure(entry, cutBefore, cutBehind);
    };
    EXPECT_EQ(ArrangePathButtons(3, 60, roomy)[1].left, 15 + 1 + 5);
    EXPECT_EQ(ArrangePathButtons(3, 37, roomy)[1].left, 15 + 1 + 3);
}

TEST(PathButtons, TheOutermostAndTheInnermostStayHoweverNarrowTheRow) {
    EXPECT_EQ(Entries(ArrangePathButtons(20, 1, Measure)), (std::vector<std::size_t>{0, 19}));
    EXPECT_EQ(Entries(ArrangePathButtons(2, 1, Measure)), (std::vector<std::size_t>{0, 1}));
    EXPECT_TRUE(ArrangePathButtons(0, 100, Measure).empty());
}

TEST(PathButtons, LongNamesAreCutByCharactersNotBytes) {
    EXPECT_EQ(PathButtonText("1234567890123", false, false), "1234567890123");
    EXPECT_EQ(PathButtonText("12345678901234", false, false), "1234567890...");
    EXPECT_EQ(PathButtonText("äöüäöüäöüäöüä", true, true), "../äöüäöüäöüäöüä/..");
    EXPECT_EQ(PathButtonText("äöüäöüäöüäöüäö", false, false), "äöüäöüäöüä...");
}

} // namespace
} // namespace zelvar
