#include "zelvar/charts/core/PlotGeometry.h"

#include "support/Test.h"
#include "zelvar/charts/core/MarkerField.h"
#include "zelvar/charts/core/NiceTicks.h"
#include "zelvar/charts/core/PlotSelection.h"

namespace zelvar {

static void PrintTo(Rect const &rect, std::ostream *out) {
    *out << rect.left << "," << rect.top << "," << rect.right << "," << rect.bottom;
}

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr ChartMargins kMargins{60, 20, 20, 32};

/// A plot area of 100 by 50 pixels.
PlotGeometry Plot(PlotRange range) { return {{180, 102}, kMargins, range}; }

TEST(PlotGeometry, CutsPixelsTowardsZero) {
    PlotGeometry const plot = Plot({.minX = 0, .minY = -1, .maxX = 3, .maxY = 1});
    EXPECT_EQ(plot.PlotWidth(), 100);
    EXPECT_EQ(plot.PlotHeight(), 50);
    EXPECT_EQ(plot.DataToWndX(1), 60 + 33);
    EXPECT_EQ(plot.DataToWndX(2), 60 + 66);
    EXPECT_EQ(plot.DataToWndX(-1), 60 - 33); // not -34
    EXPECT_EQ(plot.DataToWndY(-1), 70);
    EXPECT_EQ(plot.DataToWndY(1), 20);
    EXPECT_EQ(plot.DataToWndY(0.01), 70 - 25);
    EXPECT_EQ(plot.DataToWndSX(0.1), 3);
    EXPECT_DOUBLE_EQ(plot.WndToDataX(60), 0);
    EXPECT_DOUBLE_EQ(plot.WndToDataX(160), 3);
    EXPECT_DOUBLE_EQ(plot.WndToDataY(45), 0);
}

TEST(PlotGeometry, WhatIsNotFiniteEndsSomewhere) {
    PlotGeometry const flat = Plot({.maxX = 0, .maxY = 0});
    EXPECT_EQ(flat.DataToWndX(0), 60); // 0 / 0
    EXPECT_GT(flat.DataToWndX(1), 100'000);
    EXPECT_LT(flat.DataToWndX(-1), -100'000);
    for (double const odd : {kNaN, kInfinity, -kInfinity, 1e300})
        static_cast<void>(Plot({.maxX = odd, .maxY = 1}).DataToWndX(odd));
    EXPECT_TRUE(flat.TickMarksX().size() <= 1);
}

TEST(PlotGeometry, TicksStandWhereTheyAreTold) {
    PlotGeometry const plot = Plot({.maxX = 10, .maxY = 2, .tickX = 2.5, .tickY = 1});
    std::vector<TickMark> const x = plot.TickMarksX();
    ASSERT_EQ(x.size(), 5U);
    EXPECT_EQ(x[1].pixel, 85);
    EXPECT_EQ(x[1].label, "2.5");
    EXPECT_EQ(x[4].label, "10");
    EXPECT_EQ(x[1].labelRect, (Rect{72, 76, 97, 86})); // the step is 25 pixels
    EXPECT_FALSE(x[0].hasGrid);                        // the axis is there
    EXPECT_TRUE(x[1].hasGrid);
    std::vector<TickMark> const y = plot.TickMarksY();
    ASSERT_EQ(y.size(), 3U);
    EXPECT_EQ(y[2].pixel, 20);
    EXPECT_EQ(y[2].label, "2.00");
    EXPECT_EQ(y[2].labelRect, (Rect{14, 14, 54, 26}));
    EXPECT_EQ(plot.NumberOfXLabels(), 4);
    EXPECT_EQ(plot.CaptionXRect(), (Rect{60, 88, 160, 100}));
    EXPECT_EQ(plot.CaptionYRect(), (Rect{0, 20, 10, 70}));
    EXPECT_EQ(Format("%.2g", 1234.0), "1.2e+03"); // what users see of large numbers
}

TEST(PlotGeometry, TicksThatWouldNotEndAreNone) {
    test::Rows<char const *, PlotRange, std::size_t, std::size_t> const cases = {
        {"zero", {.maxX = 10, .maxY = 10, .tickX = 0, .tickY = 0}, 0, 1},
        {"negative", {.maxX = 10, .maxY = 10, .tickX = -1, .tickY = -1}, 0, 1},
        {"not a number", {.maxX = 10, .maxY = 10, .tickX = kNaN, .tickY = kNaN}, 0, 0},
        {"a million", {.maxX = 1e6, .maxY = 1e6}, 0, 0},
        {"too small to add", {.minX = 1e20, .minY = 1e20, .maxX = 1e20, .maxY = 1e20}, 0, 0},
        {"infinite range", {.maxX = kInfinity, .maxY = kInfinity}, 0, 0},
        {"no range", {.minX = 5, .minY = 5, .maxX = 5, .maxY = 5}, 1, 1},
        {"infinite step", {.maxX = 5, .maxY = 5, .tickX = kInfinity, .tickY = kInfinity}, 0, 0},
    };
    for (auto const &[name, range, numX, numY] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Plot(range).TickMarksX().size(), numX);
        EXPECT_EQ(Plot(range).TickMarksY().size(), numY);
    }
    EXPECT_FALSE(Plot({.minX = 1, .maxX = 0, .maxY = 1}).HasTickMarks());
    EXPECT_TRUE(Plot({.minX = 1, .maxX = 1, .maxY = 1}).HasTickMarks());
}

TEST(PlotGeometry, ATickAtEveryPointShowsItsLabelOnceAPlace) {
    PlotGeometry const plot = Plot({.maxX = 10, .maxY = 2, .tickX = 5});
    DString const named = "A";
    DString const none;
    PlotPoint const points[] = {{5, 0}, {5, 1}, {2, 0}, {kNaN, 0}, {5, 2}};
    DString const *const labels[] = {&named, &named, &none, &none, &none};
    std::vector<TickMark> const marks = plot.TickMarksAt(points, labels);
    ASSERT_EQ(marks.size(), 3U);
    EXPECT_EQ(marks[0].label, "A");
    EXPECT_EQ(marks[1].label, "2");
    EXPECT_EQ(marks[2].label, "5");
    EXPECT_EQ(marks[0].labelRect.Width(), 50); // as wide as the spacing here too
    std::vector<PlotPoint> many;
    for (int i = 0; i < 20'000; ++i)
        many.push_back({i * 1e-3, 0});
    EXPECT_TRUE(plot.TickMarksAt(many, {}).size() <= 10'000U);
}

TEST(PlotGeometry, ATurnedTextIsCentred) {
    // The factor makes a shade more than a right angle of 90 degrees, and the rest is cut off.
    EXPECT_EQ(RotatedTextOrigin({40, 10}, {0, 20, 10, 70}, 90), (Point{5 + 5, 45 + 19}));
    EXPECT_EQ(RotatedTextOrigin({40, 10}, {0, 0, 100, 20}, 0), (Point{50 - 20, 10 + 5}));
}

TEST(PlotSelection, TheNearestByXAloneIsPicked) {
    PlotGeometry const plot = Plot({.maxX = 100, .maxY = 100}); // a pixel a unit
    PlotPoint const points[] = {{10, 0}, {10, 90}, {30, 50}, {kNaN, 1}};
    using Place = std::optional<std::size_t>;
    std::tuple<double, Place, Place> const cases[] = {
        {10, {}, 0},           // of equal ones the first
        {10, 0, std::nullopt}, // again: none
        {21, {}, std::nullopt},
        {24.5, {}, 2}, // cut to five pixels
        {24, {}, std::nullopt},
        {35, 0, 2},
        {36, {}, std::nullopt},
        {kNaN, {}, std::nullopt},
        {30, 2, std::nullopt},
    };
    for (auto const &[x, former, picked] : cases)
        EXPECT_EQ(PickPoint(plot, points, x, former), picked) << x;
    EXPECT_EQ(PickPoint(plot, {}, 1, {}), std::nullopt);
}

TEST(PlotSelection, KeysStepAlongX) {
    PlotPoint const points[] = {{3, 0}, {1, 0}, {kNaN, 0}, {3, 5}, {2, 0}};
    std::vector<std::size_t> order;
    std::optional<std::size_t> at;
    for (int i = 0; i < 6; ++i)
        order.push_back(*(at = StepToPoint(points, PlotStep::Next, at)));
    EXPECT_EQ(order, (std::vector<std::size_t>{1, 4, 0, 3, 3, 3}));
    EXPECT_EQ(StepToPoint(points, PlotStep::Previous, 0), 4U);
    EXPECT_EQ(StepToPoint(points, PlotStep::Previous, {}), 3U);
    EXPECT_EQ(StepToPoint(points, PlotStep::First, 3), 1U);
    EXPECT_EQ(StepToPoint(points, PlotStep::Last, 1), 3U);
    EXPECT_EQ(StepToPoint({}, PlotStep::Next, 1), std::nullopt);
}

TEST(NiceTicks, HoldTheRangeBetweenRoundNumbers) {
    std::tuple<double, double, NiceAxis> const cases[] = {
        {0, 100, {0, 100, 20}},
        {3, 97, {0, 100, 20}},
        {-0.3, 0.9, {-0.4, 1.0, 0.2}},
        {1e6, 1e6, {5e5, 1.5e6, 2e5}},
        {0, 0, {-0.6, 0.6, 0.2}},
        {0, HUGE_VAL, {0, 1, 1}},
        {5, 1, {0, 1, 1}},
    };
    for (auto const &[minimum, maximum, expected] : cases) {
        NiceAxis const axis = NiceAxisOver(minimum, maximum, 6);
        EXPECT_NEAR(axis.step, expected.step, std::abs(expected.step) * 1e-9) << maximum;
        EXPECT_LE(axis.minimum, expected.minimum + 1e-9) << maximum;
        EXPECT_NEAR(axis.maximum, expected.maximum, std::abs(expected.step) * 1.001) << maximum;
    }
    using Scaled = std::tuple<double, double, DString (*)(double), char const *, char const *>;
    for (auto const &[minimum, maximum, write, expected, caption] :
         {Scaled{0, 0.3, PlotGeometry::XLabel, "0 0.05 0.1 0.15 0.2 0.25 0.3 ", "x"},
          {100, 120, PlotGeometry::XLabel, "0 5 10 15 20 ", "(x - 100)"},
          {0, 0.004, PlotGeometry::YLabel, "0.00 1.00 2.00 3.00 4.00 ", "x / 0.001"},
          {0, 4e9, PlotGeometry::YLabel, "0.00 1.00 2.00 3.00 4.00 ", "x / 1e+09"},
          {-1e6, -1e6 + 0.002, PlotGeometry::YLabel, "0.00 5.00 10.00 15.00 20.00 ", "(x + 1000000) / 0.0001"}}) {
        NiceAxis const axis = NiceAxisOver(minimum, maximum, 6);
        AxisScale const scale = ScaleFor(axis, write);
        NiceAxis const shown = scale.Of(axis);
        DString marks;
        for (double at = shown.minimum; at <= shown.maximum; at += shown.step)
            marks += write(at) + " ";
        EXPECT_EQ(marks, expected);
        EXPECT_EQ(scale.Caption("x"), caption);
    }
    NiceAxis const wide = NiceAxisOver(-1.7e308, 1.7e308, 6);
    EXPECT_TRUE(std::isfinite(wide.step) && std::isfinite(wide.minimum) && std::isfinite(wide.maximum));
}

TEST(MarkerField, CutsAtItsEdgesWhatReachesOverThem) {
    MarkerField field(65, 4); // a word of pixels and one
    for (auto const &[x, y] : {std::pair{0, 0}, {64, 3}, {-1, 2}, {65, 2}, {30, -1}, {30, 4}})
        field.Add(x, y);
    MarkerShape const shape{-2, {{-1, 1}, {-1, 1}, {-3, 2}}};
    PixelRows const pixels = field.Render(1, [&](int, int) { return shape; });
    std::string drawn;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 65; ++x)
            drawn += pixels.Has(x, y) ? std::to_string(x) + "," + std::to_string(y) + " " : "";
    EXPECT_EQ(drawn, "0,0 1,0 2,0 63,1 64,1 63,2 64,2 61,3 62,3 63,3 64,3 ") << "those beside it are not drawn";
}

} // namespace
} // namespace zelvar
