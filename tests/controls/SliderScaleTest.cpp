#include "zelvar/controls/core/SliderScale.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(SliderScale, EndsAreExactAndEachValueComesBackFromItsPosition) {
    for (SliderScale const &scale :
         {SliderScale(0, 100, 1, false), SliderScale(10, -10, 0.1, false), SliderScale(0.1, 0.7, 0, false),
          SliderScale(0, 10, 3, false), SliderScale(1, 1000, 0, true), SliderScale(-1000, -0.001, 0, true),
          SliderScale(-1.7e308, 1.7e308, 0, false), SliderScale(1e-300, 1e300, 0, true)}) {
        EXPECT_EQ(scale.ValueAt(0), scale.First());
        EXPECT_EQ(scale.ValueAt(scale.Positions()), scale.Last());
        EXPECT_EQ(scale.ValueAt(-5), scale.First());
        EXPECT_EQ(scale.ValueAt(scale.Positions() + 5), scale.Last());
        for (int position = 0; position <= scale.Positions(); ++position)
            ASSERT_EQ(scale.PositionOf(scale.ValueAt(position)), position)
                << scale.First() << " to " << scale.Last() << ": " << scale.ValueAt(position);
    }
}

TEST(SliderScale, ValuesBetweenAreThoseThatAUserWouldWrite) {
    EXPECT_EQ(SliderScale(0, 1, 0.1, false).ValueAt(3), 0.3);
    EXPECT_EQ(SliderScale(10, 0, 2.5, false).ValueAt(1), 7.5);
    EXPECT_EQ(SliderScale(0, 10, 3, false).ValueAt(3), 9);
    EXPECT_EQ(SliderScale(0, 10, 3, false).Positions(), 4) << "a shorter step to the end";
    EXPECT_EQ(SliderScale(0, 1, 0, false).ValueAt(333), 0.333);
    EXPECT_EQ(SliderScale(1, 10000, 0, true).ValueAt(250), 10);
    EXPECT_EQ(SliderScale(1, 10000, 1, true).ValueAt(1), 1) << "whole numbers only";
}

TEST(SliderScale, ARangeOfOneValueHasOnePosition) {
    SliderScale const scale(5, 5, 1, false);
    EXPECT_EQ(scale.Positions(), 0);
    EXPECT_EQ(scale.ValueAt(0), 5);
    EXPECT_EQ(scale.PositionOf(7), 0);
    EXPECT_EQ(scale.Moved(5, 1, 1), 5);
    EXPECT_THAT(scale.Ticks(1), testing::ElementsAre(5));
}

TEST(SliderScale, ALogarithmNeedsEndsOnOneSideOfZero) {
    for (auto const &[first, last, may] : test::Rows<double, double, bool>{
             {0.1, 10, true}, {-10, -0.1, true}, {0, 10, false}, {10, 0, false}, {-1, 10, false}})
        EXPECT_EQ(SliderScale(first, last, 0, true).IsLogarithmic(), may) << first;
    EXPECT_EQ(SliderScale(1, 100, 0, true).PositionOf(-3), 0) << "beyond the end next to zero";
    EXPECT_EQ(SliderScale(100, 1, 0, true).PositionOf(0), 1000);
}

TEST(SliderScale, SnapsToStepsAndToTheLastValue) {
    SliderScale const scale(0, 10, 3, false);
    for (auto const &[value, snapped] : {std::pair{4.4, 3}, {4.6, 6}, {9.4, 9}, {9.6, 10}, {-3.0, 0}})
        EXPECT_EQ(scale.Snapped(value), snapped) << value;
    EXPECT_EQ(SliderScale(10, 0, 4, false).Snapped(5.5), 6);
}

TEST(SliderScale, ALineMovesTowardsTheLastValueAndStopsThere) {
    EXPECT_EQ(SliderScale(0, 1, 0, false).Moved(0.2, 0.1, 1), 0.3);
    EXPECT_EQ(SliderScale(10, 0, 1, false).Moved(5, 1, 2), 3);
    EXPECT_EQ(SliderScale(0, 10, 1, false).Moved(9, 5, 1), 10);
    EXPECT_EQ(SliderScale(0, 10, 1, false).Moved(1, 5, -1), 0);
    EXPECT_EQ(SliderScale(0, 10, 2, false).Moved(4, 0.5, 1), 6) << "a step at least";
    EXPECT_EQ(SliderScale(1, 10000, 0, true).Moved(10, 1, 25), 100);
    EXPECT_EQ(SliderScale(1, 1000, 1, true).Moved(1, 1, 1), 2);
    EXPECT_EQ(SliderScale(1000, 1, 1, true).Moved(2, 1, 1), 1);
}

TEST(SliderScale, TicksHoldBothEndsAndNeverTooMany) {
    using testing::ElementsAre;
    EXPECT_THAT(SliderScale(0, 10, 1, false).Ticks(4), ElementsAre(0, 4, 8, 10));
    EXPECT_THAT(SliderScale(1, 0, 0, false).Ticks(0.5), ElementsAre(1, 0.5, 0));
    EXPECT_THAT(SliderScale(0, 10, 1, false).Ticks(0), ElementsAre(0, 10));
    EXPECT_THAT(SliderScale(0, 1e9, 1, false).Ticks(1), ElementsAre(0, 1e9));
    EXPECT_THAT(SliderScale(0.5, 200, 0, true).Ticks(0), ElementsAre(0.5, 1, 10, 100, 200));
    EXPECT_THAT(SliderScale(1, 100, 0, true).Ticks(0), ElementsAre(1, 10, 100));
}

} // namespace
} // namespace zelvar
