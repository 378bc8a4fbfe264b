#include "zelvar/views/core/RowGeometry.h"

#include "support/Test.h"
#include "zelvar/views/core/ReportRows.h"
#include "zelvar/views/core/RowScroll.h"

namespace zelvar {
namespace {

// Rows 0 to 4 in the groups 2, 0, 2, none, 0; group 1 has none. As seen, with rows of 10 and headers of 20:
//   0 row 3 | 10 header 0 | 30 row 1 | 40 row 4 | 50 header 2 | 70 row 0 | 80 row 2 | 90
RowGeometry Grouped() {
    RowGeometry geometry;
    geometry.SetRowHeight(10);
    geometry.SetGroupHeaderHeight(20);
    geometry.SetGroupedRows({2, 0, 2, -1, 0}, 3);
    return geometry;
}

TEST(RowGeometry, RowsStandBelowTheHeadersOfTheirGroups) {
    RowGeometry const geometry = Grouped();
    std::int64_t const tops[] = {70, 30, 80, 0, 40};
    for (int row = 0; row < 5; ++row)
        EXPECT_EQ(geometry.RowTop(row), tops[row]) << "row " << row;
    EXPECT_EQ(geometry.ContentHeight(), 90);
    ASSERT_EQ(geometry.Spans().size(), 3U);
    EXPECT_EQ(std::pair(geometry.Spans()[1].group, geometry.Spans()[1].headerTop), std::pair(0, std::int64_t{10}));
    EXPECT_EQ(geometry.Spans()[2].group, 2);
}

TEST(RowGeometry, NewRowsForgetTheFormerGroups) {
    RowGeometry geometry = Grouped();
    geometry.SetGroupedRows({0, 0}, 1);
    EXPECT_EQ(geometry.Spans().size(), 1U);
    EXPECT_EQ(geometry.ContentHeight(), 40);
    geometry.SetRows(2);
    EXPECT_TRUE(!geometry.IsGrouped() && geometry.ContentHeight() == 20);
}

TEST(RowGeometry, APointMeetsARowAHeaderOrNothing) {
    RowGeometry const geometry = Grouped();
    std::tuple<std::int64_t, std::optional<int>> const cases[] = {{-1, {}}, {0, 3},  {9, 3},  {10, {}}, {29, {}},
                                                                  {30, 1},  {39, 1}, {40, 4}, {50, {}}, {69, {}},
                                                                  {70, 0},  {80, 2}, {89, 2}, {90, {}}};
    for (auto const &[y, row] : cases)
        EXPECT_EQ(geometry.RowAt(y), row) << "y " << y;
}

TEST(RowGeometry, PositionsCountAsSeen) {
    RowGeometry const geometry = Grouped();
    int const rows[] = {3, 1, 4, 0, 2};
    for (int position = 0; position < 5; ++position) {
        EXPECT_EQ(geometry.RowAtPosition(position), rows[position]);
        EXPECT_EQ(geometry.PositionOfRow(rows[position]), position);
    }
    for (auto const &[y, position] : {std::pair{15, 1}, {39, 1}, {45, 2}, {90, 5}}) // on a header: the row behind it
        EXPECT_EQ(geometry.FirstPositionBelow(y), position);
}

TEST(RowGeometry, MillionsOfRowsAreArithmetic) {
    RowGeometry geometry;
    geometry.SetRowHeight(24);
    geometry.SetRows(200'000'000); // beyond 2^32 pixels
    EXPECT_EQ(geometry.ContentHeight(), 4'800'000'000);
    EXPECT_EQ(geometry.RowAt(4'799'999'999), 199'999'999);
    EXPECT_EQ(geometry.RowAt(4'800'000'000), std::nullopt);
    geometry.SetGroupedRows({}, 6);
    EXPECT_EQ(geometry.ContentHeight() + geometry.FirstPositionBelow(0), 0);
    EXPECT_EQ(geometry.RowAt(0), std::nullopt);
}

TEST(RowScroll, ABarCountsRowsOrWithGroupsPixels) {
    RowGeometry plain;
    plain.SetRowHeight(10);
    plain.SetRows(100);
    RowGeometry const grouped = Grouped();
    using Bar = std::array<std::int64_t, 4>; // step, page, last value, the content's top at value 5
    test::Rows<RowGeometry const &, int, Bar> const bars = {{plain, 35, {1, 3, 97, 50}},
                                                            {plain, 5, {1, 1, 100, 50}},
                                                            {grouped, 35, {10, 35, 55, 5}},
                                                            {grouped, 90, {10, 90, 0, 5}}};
    for (auto const &[geometry, height, bar] : bars) {
        RowScroll const scroll(geometry, height);
        EXPECT_EQ((Bar{scroll.Step(), scroll.Page(), scroll.Last(), scroll.ContentTop(5)}), bar);
    }
    test::Rows<RowGeometry const &, int, int, int> const shown = {
        {plain, 50, 0, 48},  {plain, 50, 49, 49},  {plain, 50, 60, 50}, // position, value before and after
        {grouped, 2, 0, 15}, {grouped, 2, 60, 40}, {grouped, 1, 60, 10}, {grouped, 1, 0, 5}};
    for (auto const &[geometry, position, before, after] : shown)
        EXPECT_EQ(RowScroll(geometry, 35).ValueToShow(position, before), after) << position << " from " << before;
}

TEST(ReportRows, TextsFollowTheirColumnsAndRowsTheirWords) {
    ReportRows rows;
    rows.Insert(0, {.texts = {"a", "b"}, .word = 3});
    rows.Insert(1, {.texts = {"x"}, .word = 1});
    EXPECT_TRUE(rows.SetText(0, 3, "d"));
    rows.InsertTexts(1);
    EXPECT_EQ(rows.Find(0)->texts, (std::vector<DString>{"a", "", "b", "", "d"}));
    rows.EraseTexts(2);
    EXPECT_EQ(rows.Find(0)->texts, (std::vector<DString>{"a", "", "", "d"}));
    EXPECT_EQ(rows.Find(1)->texts, std::vector<DString>{"x"}) << "it has no text there";
    EXPECT_EQ(rows.Text(1, 1) + rows.Text(2, 0) + rows.Text(0, -1), "");
    EXPECT_FALSE(rows.SetText(2, 0, "y") || rows.Erase(2) || rows.Erase(-1));
    rows.Insert(1, {.texts = {"m"}, .word = 2});
    EXPECT_EQ(rows.Sort([](ItemWord a, ItemWord b) { return a > b; }), (std::vector<int>{2, 1, 0}));
    EXPECT_EQ(rows.Text(0, 0) + rows.Text(1, 0) + rows.Text(2, 0), "xma");
}

TEST(ReportRows, ARowStandsInTheFirstGroupWithItsId) {
    ReportRows rows;
    for (int const id : {7, 7, 2})
        rows.AddGroup("", id);
    for (int const group : {2, 7, 9, -1})
        rows.Insert(rows.Count(), {.group = group});
    EXPECT_EQ(rows.GroupOfRows(), (std::vector<int>{2, 0, -1, -1}));
}

} // namespace
} // namespace zelvar
