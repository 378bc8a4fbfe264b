#include "zelvar/opends/core/PathButtons.h"

#include "support/Test.h"

namespace zelvar {
namespace {

// Ten pixels a button, five more for each mark.
int Measure(std::size_t, bool cutBefore, bool cutBehind) { return 10 + (cutBefore ? 5 : 0) + (cutBehind ? 5 : 0); }

/// "0> <2 3": entries and where they are marked as cut.
std::string Shown(std::vector<PathButton> const &buttons) {
    std::string shown;
    for (PathButton const &button : buttons)
        shown += (shown.empty() ? "" : " ") + std::string(button.cutBefore ? "<" : "") + std::to_string(button.entry) +
                 (button.cutBehind ? ">" : "");
    return shown;
}

TEST(PathButtons, ARowThatJustFitsIsShownWholeAndOnePixelLessCutsBehindTheOutermost) {
    EXPECT_EQ(Shown(ArrangePathButtons(4, 44, Measure)), "0 1 2 3");
    EXPECT_EQ(ArrangePathButtons(4, 44, Measure)[3].left, 33);
    EXPECT_EQ(Shown(ArrangePathButtons(4, 43, Measure)), "0> <2 3");
    EXPECT_EQ(ArrangePathButtons(4, 43, Measure)[1].left, 16) << "43 - (15 + 15 + 10 + 3) - 2: no room to spread";
}

TEST(PathButtons, RoomLeftByACutSpreadsBehindTheOutermostUpToFivePixels) {
    auto const roomy = [](std::size_t entry, bool cutBefore, bool cutBehind) {
        return entry == 1 ? 100 : Measure(entry, cutBefore, cutBehind);
    };
    EXPECT_EQ(ArrangePathButtons(3, 60, roomy)[1].left, 15 + 1 + 5);
    EXPECT_EQ(ArrangePathButtons(3, 37, roomy)[1].left, 15 + 1 + 3);
}

TEST(PathButtons, TheOutermostAndTheInnermostStayHoweverNarrowTheRow) {
    EXPECT_EQ(Shown(ArrangePathButtons(20, 1, Measure)), "0> <19");
    EXPECT_EQ(Shown(ArrangePathButtons(2, 1, Measure)), "0 1");
    EXPECT_EQ(Shown(ArrangePathButtons(0, 100, Measure)), "");
}

TEST(PathButtons, LongNamesAreCutByCharactersNotBytes) {
    EXPECT_EQ(PathButtonText("1234567890123", false, false), "1234567890123");
    EXPECT_EQ(PathButtonText("12345678901234", false, false), "1234567890...");
    EXPECT_EQ(PathButtonText("äöüäöüäöüäöüä", true, true), "../äöüäöüäöüäöüä/..");
    EXPECT_EQ(PathButtonText("äöüäöüäöüäöüäö", false, false), "äöüäöüäöüä...");
}

} // namespace
} // namespace zelvar
