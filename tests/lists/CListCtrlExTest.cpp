#include "zelvar/lists/CListCtrlEx.h"

#include "support/Test.h"

namespace zelvar {
namespace {

TEST(CListCtrlEx, ColumnsAreAsWideAsTheirCaptionsAndShowWhatTheMaskSays) {
    CListCtrlEx list;
    int const margin = 15;
    constexpr int all = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    for (auto const &[at, subItem, mask, shown] :
         test::Rows<int, int, int, int>{{0, -1, all, 0}, {1, 2, all, 2}, {2, 1, all & ~LVCF_SUBITEM, 2}}) {
        EXPECT_EQ(list.AddColumn("Sample", at, subItem, mask, LVCFMT_RIGHT), at);
        ReportColumn column;
        ASSERT_TRUE(list.GetColumn(at, column));
        EXPECT_EQ(column.caption, "Sample");
        EXPECT_EQ(column.format, LVCFMT_RIGHT);
        EXPECT_EQ(column.width, list.fontMetrics().horizontalAdvance("Sample") + margin);
        EXPECT_EQ(column.subItem, shown);
    }
    EXPECT_EQ(list.AddColumn("no text", 3, -1, LVCF_WIDTH), 3);
    ReportColumn column;
    ASSERT_TRUE(list.GetColumn(3, column));
    EXPECT_EQ(column.caption, "");
    EXPECT_EQ(list.AddColumn("nowhere", -1), -1);
}

TEST(CListCtrlEx, ItemsAreInsertedAndCellsWritten) {
    CListCtrlEx list;
    list.AddColumn("a", 0);
    list.AddColumn("b", 1);
    EXPECT_EQ(list.AddItem(0, 1, "x"), 0); // no such row
    EXPECT_EQ(list.AddItem(0, 0, "first", 4), 0);
    EXPECT_EQ(list.AddItem(9, 0, nullptr), 1); // at the end
    EXPECT_EQ(list.AddItem(0, 1, "cell", 7), 1);
    EXPECT_EQ(list.AddItem(0, 2, "beside"), 0); // no such column
    EXPECT_EQ(list.GetItemText(0, 0) + "|" + list.GetItemText(0, 1), "first|cell");
    EXPECT_EQ(list.GetItemImage(0), 4);
    EXPECT_EQ(list.GetItemImage(1), -1);
    ImageList images;
    EXPECT_EQ(list.SetImageList(&images, LVSIL_SMALL), nullptr);
    EXPECT_EQ(list.SetImageList(&images, LVSIL_NORMAL), nullptr);
    EXPECT_EQ(list.SetImageList(nullptr, LVSIL_SMALL), &images);
}

} // namespace
} // namespace zelvar
