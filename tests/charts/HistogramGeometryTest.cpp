#include "zelvar/charts/core/HistogramGeometry.h"

#include "support/Test.h"

namespace zelvar {

static void PrintTo(Rect const &rect, std::ostream *out) {
    *out << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom;
}

namespace {

constexpr ChartMargins kMargins{35, 15, 20, 20};

/// 3 slots over 0 to 9 with 2, 6 and 0 values.
DHstg Sample() {
    DHstg histogram(3, 0, 9);
    for (double const value : {0.0, 1.0, 3.0, 3.5, 4.0, 4.5, 5.0, 5.9})
        histogram.AddValue(value);
    return histogram;
}

/// An area of 100 by 50 pixels.
HistogramGeometry Chart(DHstg const *histogram, double share = 1.0) { return {{150, 90}, kMargins, histogram, share}; }

TEST(HistogramGeometry, BarsAreCutTowardsZeroAndMayRiseAboveTheArea) {
    DHstg const histogram = Sample();
    HistogramGeometry const chart = Chart(&histogram);
    EXPECT_EQ(chart.BarRect(0), (Rect{35, 70 - 12, 68, 70})); // 50 * 2 / 8 is 12.5
    EXPECT_EQ(chart.BarRect(1), (Rect{68, 70 - 37, 101, 70}));
    EXPECT_EQ(chart.BarRect(2), (Rect{101, 70, 135, 70}));
    EXPECT_EQ(Chart(&histogram, 0.5).BarRect(1).top, 70 - 75);
    EXPECT_EQ(chart.CountRect(0), (Rect{35, 46, 68, 55}));
    EXPECT_EQ(chart.SumRect(), (Rect{75, 20, 135, 32}));
    DHstg const empty(3, 0, 1);
    EXPECT_EQ(Chart(&empty).BarRect(0).top, 70); // 0 / 0
}

TEST(HistogramGeometry, PercentagesAreWholeNumbersAtEveryStepOfTheLadder) {
    std::pair<double, int> const ladder[] = {{1, 20}, {0.5, 10}, {0.25, 5}, {0.2, 4}, {0.15, 3}, {0.1, 2}, {0.05, 1}};
    for (auto const &[share, step] : ladder) {
        int label = 0;
        for (TickMark const &mark : Chart(nullptr, share).TickMarksY())
            EXPECT_EQ(mark.label, std::to_string(step * label++) + "%");
        EXPECT_EQ(label, 6) << share;
    }
    EXPECT_EQ(Chart(nullptr).TickMarksY()[1].labelRect, (Rect{10, 55, 29, 65}));
}

TEST(HistogramGeometry, EdgesAreLabelledAllOrTheOuterTwo) {
    DHstg const histogram = Sample();
    HistogramGeometry const chart = Chart(&histogram);
    std::vector<TickMark> const all = chart.TickMarksX(true);
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[1].pixel, 68);
    EXPECT_EQ(all[3].label, "9.0");
    EXPECT_EQ(all[1].labelRect, (Rect{51, 76, 118, 95}));
    std::vector<TickMark> const outer = chart.TickMarksX(false);
    EXPECT_EQ(outer[0].label, "0.0");
    EXPECT_EQ(outer[1].label, "");
    EXPECT_EQ(outer[3].label, "9.0");
    EXPECT_EQ(outer[3].labelRect, (Rect{123, 76, 147, 95}));
    DHstg const fine(1'000'000, 0, 1);
    EXPECT_TRUE(Chart(&fine).TickMarksX(true).empty() && Chart(nullptr).TickMarksX(true).empty());
}

TEST(HistogramGeometry, AClickPicksTheSlotUnderIt) {
    DHstg const histogram = Sample();
    HistogramGeometry const chart = Chart(&histogram);
    for (auto const &[x, slot] : {std::pair{34, -1}, {35, 0}, {68, 0}, {69, 1}, {135, 2}, {136, -1}})
        EXPECT_EQ(chart.SlotAt(x), slot) << x; // the last pixel is the maximum
    EXPECT_EQ(Chart(nullptr).SlotAt(50), -1);
    DHstg const odd(3, 0.1, 0.3); // 0.1 + (0.3 - 0.1) is more than 0.3
    EXPECT_EQ(Chart(&odd).SlotAt(135), 2);
}

TEST(HistogramGeometry, TheAutomaticTopIsTheFirstStepNotPassed) {
    auto const shareOf = [](int inFirst, int of) {
        DHstg histogram(of, 0, of);
        for (int i = 0; i < inFirst; ++i)
            histogram.AddValue(0);
        for (int i = inFirst; i < of; ++i)
            histogram.AddValue(i);
        return AutomaticShare(&histogram);
    };
    for (auto const &[inFirst, of, share] :
         test::Rows<int, int, double>{{1, 20, 0.05}, {3, 20, 0.15}, {30, 100, 0.5}, {51, 100, 1.0}})
        EXPECT_EQ(shareOf(inFirst, of), share);
    EXPECT_EQ(AutomaticShare(nullptr), 1.0);
    DHstg const empty(4, 0, 1);
    EXPECT_EQ(AutomaticShare(&empty), 1.0);
}

} // namespace
} // namespace zelvar
