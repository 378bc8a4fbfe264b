#include "zelvar/layout/core/WindowRule.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(WindowRule, AnAxisWithoutFreedomKeepsItsMinimum) {
    EXPECT_EQ(ComputeTrackSizes({100, 80}, {}, {8, 30}, true, true), (TrackSizes{{108, 110}, {0, 0}}));
    EXPECT_EQ(ComputeTrackSizes({100, 80}, {200, 0}, {8, 30}, true, false), (TrackSizes{{108, 110}, {208, 110}}));
    EXPECT_EQ(ComputeTrackSizes({100, 80}, {200, 90}, {8, 30}, false, true), (TrackSizes{{108, 110}, {108, 120}}));
}

TEST(WindowRule, StretchingGivesTheOddPixelToTheFarEdge) {
    EXPECT_EQ(StretchedRect({10, 10, 20, 20}, {5, 4}), (Rect{8, 8, 23, 22}));
    EXPECT_EQ(StretchedRect({10, 10, 20, 20}, {-5, 0}), (Rect{12, 10, 18, 20}));
    EXPECT_TRUE(StretchedRect({10, 10, 20, 20}, {-20, 0}).IsEmpty());
}

TEST(WindowRule, AWindowWithinFivePixelsOfTheScreensEdgeIsOutOfReach) {
    Rect const screen{0, 0, 800, 600};
    for (bool const within : {false, true}) {
        EXPECT_EQ(IsReachable({-200, 100, within ? 6 : 5, 200}, screen), within);
        EXPECT_EQ(IsReachable({100, within ? 594 : 595, 200, 700}, screen), within);
    }
    EXPECT_EQ(NormalizedRect({20, 40, 10, 30}), (Rect{10, 30, 20, 40}));
}

} // namespace
} // namespace zelvar
