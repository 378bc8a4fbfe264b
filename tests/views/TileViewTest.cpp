// A report view whose rows are shown as tiles.
#include "support/ReportStage.h"
#include "zelvar/views/core/RowScroll.h"

namespace zelvar {
namespace {

using test::FillStored;
using test::Stage;
using test::TellingView;

TEST(TileGeometry, LinesAreArithmeticForAnyNumberOfRows) {
    RowGeometry tiles;
    tiles.SetRowHeight(10);
    tiles.SetTiles(8, 3, 100); // 0 1 2 / 3 4 5 / 6 7
    EXPECT_EQ(tiles.ContentHeight(), 300);
    test::Rows<std::int64_t, std::optional<int>, int> const heights = {{-1, {}, 0}, {0, 0, 0},   {99, 0, 0},
                                                                       {100, 3, 3}, {299, 6, 6}, {300, {}, 8}};
    for (auto const &[y, row, below] : heights) {
        EXPECT_EQ(tiles.RowAt(y), row) << y;
        EXPECT_EQ(tiles.FirstPositionBelow(y), below) << y;
    }
    tiles.SetTiles(6, 3, 100);
    EXPECT_EQ(tiles.ContentHeight(), 200) << "a line that is full";
    tiles.SetTiles(200'000'000, 2, 300); // ten times the pixels that a bar can count
    RowScroll const scroll(tiles, 1000);
    EXPECT_LE(scroll.ContentTop(scroll.Last()), tiles.ContentHeight() - 1000 + 30);
    EXPECT_GE(scroll.ContentTop(scroll.Last()), tiles.ContentHeight() - 1000);
    int const value = scroll.ValueToShow(150'000'000, 0);
    EXPECT_GE(scroll.ContentTop(value) + 1000, tiles.PositionTop(150'000'000) + 300) << "wholly seen";
    EXPECT_LE(scroll.ContentTop(value), tiles.PositionTop(150'000'000));
}

TEST(TileGeometry, ABarCountsPixelsAndShowsWholeTiles) {
    RowGeometry tiles;
    tiles.SetTiles(10, 2, 90);
    RowScroll const scroll(tiles, 200);
    EXPECT_EQ(std::tuple(scroll.Step(), scroll.Page(), scroll.Last(), scroll.RowsPerPage()),
              std::tuple(30, 200, 250, 4));
    test::Rows<int, int, int> const shown = {{0, 100, 0}, {1, 0, 0},   {4, 0, 70},
                                             {4, 70, 70}, {4, 71, 71}, {2, 250, 90}};
    for (auto const &[position, before, after] : shown)
        EXPECT_EQ(scroll.ValueToShow(position, before), after) << position << " from " << before;
}

struct TileView : testing::Test {
    TileView() {
        FillStored(view, 11);
        view.ShowTiles({80, 60}); // five in a line of 400 and less than 480
        stage.emplace(view, 420, 240);
    }
    TellingView view;
    std::optional<Stage> stage;
};

TEST_F(TileView, OneGeometryServesPaintingAndPressing) {
    int const perLine = view.viewport()->width() / 80;
    ASSERT_EQ(perLine, 5);
    for (int row = 0; row < 11; ++row) {
        Rect const tile = view.GetItemRect(row);
        EXPECT_EQ(tile.top, row / perLine * 60);
        for (Point const corner : {Point{tile.left, tile.top}, {tile.right - 1, tile.bottom - 1}})
            EXPECT_EQ(view.SubItemHitTest(corner).row, row);
        Rect const name = view.GetSubItemRect(row, 0, LVIR_LABEL);
        Rect const size = view.GetSubItemRect(row, 1, LVIR_LABEL);
        EXPECT_TRUE(view.GetSubItemRect(row, 0, LVIR_ICON).bottom <= name.top && name.bottom <= size.top &&
                    size.bottom <= tile.bottom);
        EXPECT_TRUE(view.GetSubItemRect(row, 2, LVIR_LABEL).IsEmpty());
    }
    EXPECT_EQ(view.GetItemRect(4).right, view.viewport()->width()) << "tiles share what a line leaves";
    EXPECT_EQ(view.SubItemHitTest({view.viewport()->width() - 5, 130}).row, -1) << "behind the last one";
    stage->Click(7);
    stage->Click(9, Qt::ShiftModifier);
    EXPECT_EQ(stage->Selected(), "7 8 9");
    EXPECT_EQ(view.GetSeenRows(), std::pair(0, 11));
    EXPECT_EQ(view.horizontalScrollBar()->maximum(), 0);
}

TEST_F(TileView, ArrowsGoInTwoDimensions) {
    test::Rows<Qt::Key, Qt::KeyboardModifiers, int, std::string> const steps = {
        {Qt::Key_Down, {}, 0, "0"},       {Qt::Key_Right, {}, 1, "1"},
        {Qt::Key_Down, {}, 6, "6"},       {Qt::Key_Right, Qt::ShiftModifier, 7, "6 7"},
        {Qt::Key_Down, {}, 10, "10"}, // the last line is short
        {Qt::Key_Down, {}, 10, "10"},     {Qt::Key_Up, {}, 5, "5"},
        {Qt::Key_Left, {}, 4, "4"},       {Qt::Key_Up, {}, 4, "4"},
        {Qt::Key_PageDown, {}, 10, "10"}, {Qt::Key_Home, {}, 0, "0"},
        {Qt::Key_Left, {}, 0, "0"},       {Qt::Key_End, Qt::ControlModifier, 10, "0"},
        {Qt::Key_PageUp, {}, 0, "0"}};
    for (auto const &[key, modifiers, focus, selected] : steps) {
        stage->Key(key, modifiers);
        EXPECT_EQ(view.GetFocusRow(), focus) << key;
        EXPECT_EQ(stage->Selected(), selected) << key;
    }
    view.setLayoutDirection(Qt::RightToLeft);
    EXPECT_GT(view.GetItemRect(0).left, view.GetItemRect(1).left);
    stage->Key(Qt::Key_Left);
    EXPECT_EQ(view.GetFocusRow(), 1) << "where one reads from the right";
}

TEST_F(TileView, TheRowOnTopStaysInSightWhateverTheSizeAndTheLook) {
    for (int row = 11; row < 300; ++row)
        view.InsertItem({.row = row});
    int const row = 200;
    view.EnsureVisible(row);
    stage->Click(row);
    for (Size const size : {Size{150, 100}, Size{}, Size{80, 60}}) {
        view.ShowTiles(size);
        EXPECT_FALSE(view.GetItemRect(row).Intersected(view.GetClientRect()).IsEmpty()) << size.cx;
        EXPECT_EQ(stage->Selected(), "200");
    }
    view.SetItemState(row, 0, LVIS_FOCUSED); // now the uppermost one counts
    view.verticalScrollBar()->setValue(60 * 20);
    for (Size const size : {Size{}, Size{80, 60}, Size{}, Size{80, 60}}) {
        view.ShowTiles(size);
        EXPECT_EQ(view.GetTopIndex(), 100) << size.cx;
    }
    int const top = view.GetTopIndex();
    view.resize(700, 240);
    QCoreApplication::processEvents();
    EXPECT_FALSE(view.GetItemRect(top).Intersected(view.GetClientRect()).IsEmpty()) << "a line has more of them now";
}

} // namespace
} // namespace zelvar
