#include "zelvar/lists/CListCtrlEx.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(CListCtrlEx, ColumnsAreAsWideAsTheirCaptionsAndShowWhatTheMaskSays) {
    CListCtrlEx list;
    int const wide = list.fontMetrics().horizontalAdvance("Sample") + 15;
    constexpr int all = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    using Column = std::tuple<DString, int, int, int>; // caption, format, width, which text it shows
    test::Rows<int, int, Column> const cases = {{-1, all, {"Sample", LVCFMT_RIGHT, wide, 0}},
                                                {2, all, {"Sample", LVCFMT_RIGHT, wide, 2}},
                                                {1, all & ~LVCF_SUBITEM, {"Sample", LVCFMT_RIGHT, wide, 2}},
                                                {-1, LVCF_WIDTH, {"", LVCFMT_LEFT, wide, 3}},
                                                {-1, LVCF_TEXT, {"Sample", LVCFMT_LEFT, 0, 4}}};
    for (int at = 0; auto const &[subItem, mask, expected] : cases) {
        EXPECT_EQ(list.AddColumn("Sample", at, subItem, mask, LVCFMT_RIGHT), at);
        ReportColumn column;
        EXPECT_TRUE(list.GetColumn(at++, column));
        EXPECT_EQ(Column(column.caption, column.format, column.width, column.subItem), expected);
    }
    EXPECT_EQ(list.AddColumn("nowhere", -1), -1);
}

TEST(CListCtrlEx, ItemsAreInsertedAndCellsWritten) {
    CListCtrlEx list;
    list.AddColumn("a", 0);
    list.AddColumn("b", 1);
    test::Rows<int, int, char const *, int> const cells = {
        {0, 1, "x", 0}, {0, 0, "first", 0}, {9, 0, nullptr, 1}, {0, 1, "cell", 1}, {0, 2, "beside", 0}};
    for (auto const &[row, col, text, result] : cells) // no such row, rows (the second one at the end), cells
        EXPECT_EQ(list.AddItem(row, col, text, 4 - row), result);
    EXPECT_EQ(list.GetItemText(0, 0) + "|" + list.GetItemText(0, 1), "first|cell");
    EXPECT_EQ(list.GetItemImage(0), 4);
    EXPECT_EQ(list.GetItemImage(1), -5);
    ImageList images;
    for (auto const &[which, former] :
         {std::pair{LVSIL_SMALL, HIMAGELIST{}}, {LVSIL_NORMAL, {}}, {LVSIL_SMALL, &images}})
        EXPECT_EQ(list.SetImageList(&images, which), former);
}

} // namespace
} // namespace zelvar
