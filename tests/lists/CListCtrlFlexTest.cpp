#include "zelvar/lists/CListCtrlFlex.h"

#include "support/ReportStage.h"
#include "zelvar/lists/CListCtrlEx.h"
#include "zelvar/platform/ui/SystemColor.h"

namespace zelvar {
namespace {

using platform::SystemColor;
using platform::ToQColor;
using test::Stage;

/// The texts of a column from the top, separated by blanks.
std::string Column(CListCtrlFlex const &list, int col = 0) {
    std::string text;
    for (int row = 0; row < list.GetItemCount(); ++row)
        text += (row == 0 ? "" : " ") + list.GetItemText(row, col);
    return text;
}

/// A column more, and plain rows.
void Fill(CListCtrlFlex &list, ADIColType type, std::vector<std::string> const &texts = {}) {
    list.InsertColumn(list.GetColumnCount(), type, "Name", false, LVCFMT_LEFT, 200, list.GetColumnCount());
    for (std::string const &text : texts)
        list.InsertItem(list.GetItemCount(), text, 0, nullptr, 0, 0xFFFFFF, 0);
}

TEST(CListCtrlFlex, ABackgroundOfZeroIsTextColouredWithoutAnImageAndBlackWithOneAndTheListsOwnServesTheRest) {
    test::DarkPalette const dark;
    QColor const text = ToQColor(SystemColor(COLOR_WINDOWTEXT));
    QColor const window = ToQColor(SystemColor(COLOR_WINDOW));
    CListCtrlFlex list;
    Fill(list, ADICol_String);
    for (ColorRef const back : {0x000000U, 0xFFFFFFU, 0x0000FFU}) {
        list.InsertItem(list.GetItemCount(), "plain", 0, nullptr, 0, back, 0);
        list.InsertItem(list.GetItemCount(), "with an image", -1, 0, nullptr, 0, back, 0);
    }
    static_cast<ReportView &>(list).InsertItem({.row = 6, .text = "no record"});
    Stage const stage(list);
    for (ColorRef const own : {0U, Rgb(1, 200, 3), 0U}) {
        EXPECT_EQ(list.SetBkColor(own), 1);
        EXPECT_EQ(list.IsBkColorSet(), own != 0);
        QColor const rest = own == 0 ? window : ToQColor(own);
        QColor const expected[] = {text, Qt::black, window, window, Qt::red, Qt::red, rest};
        for (int row = 0; row < 7; ++row)
            EXPECT_EQ(test::ColorAt(*list.viewport(), {150, list.GetItemRect(row).bottom - 2}), expected[row]) << row;
        EXPECT_EQ(test::ColorAt(*list.viewport(), {390, 5}), rest) << "beside the columns";
    }
}

TEST(CListCtrlFlex, DataLivesInRecords) {
    CListCtrlFlex list;
    Fill(list, ADICol_String, {"a"});
    static_cast<ReportView &>(list).InsertItem({.row = 1, .text = "no record"});
    EXPECT_EQ(list.SetItemData(0, 0xFEDCBA9876543210), 0);
    EXPECT_EQ(list.GetItemData(0), 0xFEDCBA9876543210);
    EXPECT_EQ(list.GetItemData(1), 0U);
    EXPECT_EQ(list.SetItemData(1, 5), -1);
    EXPECT_EQ(list.GetItemData(2), static_cast<std::uint64_t>(-1));
    EXPECT_EQ(list.SetItemData(2, 5), -1);
    list.Sort(0, true); // must leave rows without records alone
    EXPECT_EQ(Column(list), "a no record");
}

TEST(CListCtrlFlex, AHeadingSortsAscendingThenDescending) {
    std::string const zeros(23, '0'); // 24 bytes of a number count, 255 of a text
    std::string const x(254, 'x');
    test::Rows<char const *, ADIColType, std::vector<std::string>, std::string, std::string> const cases = {
        {"numbers, and what is none as the largest", ADICol_Double, {"12", "abc", "3"}, "3 12 abc", "abc 12 3"},
        {"whole numbers likewise", ADICol_Int, {"10", "9", "-1"}, "-1 9 10", "10 9 -1"},
        {"texts by bytes", ADICol_String, {"a9", "a10", "\xc3\xa9", "B"}, "B a10 a9 \xc3\xa9", "\xc3\xa9 a9 a10 B"},
        {"an unknown type is text", ADICol_None, {"9", "10"}, "10 9", "9 10"},
        {"an empty list", ADICol_Double, {}, "", ""},
        {"equal ones turn round, then stay", ADICol_Int, {"7a", "7b", "1c", "7d"}, "1c 7d 7b 7a", "7d 7b 7a 1c"},
        {"the last that counts",
         ADICol_Double,
         {zeros + "3", zeros + "2"},
         zeros + "2 " + zeros + "3",
         zeros + "3 " + zeros + "2"},
        {"no more",
         ADICol_Double,
         {zeros + "02", zeros + "03"},
         zeros + "03 " + zeros + "02",
         zeros + "03 " + zeros + "02"},
        {"the last of a text", ADICol_String, {x + "b", x + "a"}, x + "a " + x + "b", x + "b " + x + "a"},
        {"no more of it", ADICol_String, {x + "-a", x + "-b"}, x + "-b " + x + "-a", x + "-b " + x + "-a"}};
    for (auto const &[name, type, texts, ascending, descending] : cases) {
        SCOPED_TRACE(name);
        CListCtrlFlex list;
        Fill(list, type, texts);
        Stage stage(list);
        for (int click = 0; click < 3; ++click) {
            list.EnblSort(click < 2); // the third is remembered all the same
            stage.ClickHeading(0);
            EXPECT_EQ(Column(list), click == 0 ? ascending : descending);
            EXPECT_EQ(list.GetLastSort().IsSortedAscnd(), click != 1);
            EXPECT_EQ(list.GetLastSort().GetCol(), 0);
        }
    }
}

TEST(CListCtrlFlex, ColumnsMoveAndGo) {
    CListCtrlFlex list;
    Fill(list, ADICol_Int);
    Fill(list, ADICol_Double);
    EXPECT_EQ(list.MoveColumn(0, 1), 1);
    EXPECT_EQ(list.DeleteColumn(0), 1);
    EXPECT_EQ(list.GetColType(0), ADICol_Int);
    list.RmvAllCol();
    EXPECT_EQ(list.GetColumnCount(), 0);
}

TEST(CListCtrlFlex, TheIndentAndTheImageMoveTheFirstTextOnlyAndEditsStandOnTexts) {
    ImageList images;
    images.Add({.name = "no-such-icon", .fallback = "folder"});
    CListCtrlFlex list;
    list.SetImageList(&images);
    list.InsertColumn(0, ADICol_String, "Name", false, LVCFMT_LEFT, 150, 0);
    list.InsertColumn(1, ADICol_String, "Note", false, LVCFMT_LEFT, 100, 1);
    list.InsertItem(0, "|||||||||||||||||||||||||", 0, 0, nullptr, 0, 0xFFFFFF, 30);
    list.SetItemText(0, 1, "|"); // no letter of it may be left out
    Stage const stage(list);
    // Style, first column in the order, where the text of each column begins.
    test::Rows<unsigned, int, int, int> const cases = {
        {0U, 0, 46, 150}, {0U, 1, 100, 46}, {LVS_NOCOLUMNHEADER, 1, 46, 150}};
    for (int run = 0; run < 6; ++run) {
        auto const &[style, first, name, note] = cases.begin()[run / 2];
        SCOPED_TRACE(run);
        list.ModifyStyle(LVS_NOCOLUMNHEADER, style);
        list.SetColumnOrderArray({first, 1 - first});
        list.setLayoutDirection(run % 2 == 0 ? Qt::LeftToRight : Qt::RightToLeft);
        QImage const image = test::PictureOf(*list.viewport());
        auto const turned = [&](int x) { return list.isRightToLeft() ? image.width() - 1 - x : x; };
        auto const inkIn = [&](int from, int to) {
            for (int x = from; x < to; ++x)
                for (int y = 0; y < list.RowHeight(); ++y)
                    if (image.pixelColor(turned(x), y).lightness() < 100)
                        return true;
            return false;
        };
        EXPECT_NE(image.pixelColor(turned(8), 8), image.pixelColor(turned(20), 8));
        EXPECT_FALSE(inkIn(16, 46)) << "the image stands at the edge, the text behind the indent";
        for (auto const &[col, start] : {std::pair{0, name}, {1, note}}) {
            EXPECT_TRUE(inkIn(start, start + 6)) << col;
            Rect const label = list.GetSubItemRect(0, col, LVIR_LABEL);
            EXPECT_EQ(list.isRightToLeft() ? label.right - 1 : label.left, turned(start)) << col;
            EXPECT_EQ(list.SubItemHitTest({turned(start), 5}).col, col);
        }
    }
}

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
    EXPECT_TRUE(list.GetItemImage(0) == 4 && list.GetItemImage(1) == -5);
    ImageList images;
    for (auto const &[which, former] :
         {std::pair{LVSIL_SMALL, HIMAGELIST{}}, {LVSIL_NORMAL, {}}, {LVSIL_SMALL, &images}})
        EXPECT_EQ(list.SetImageList(&images, which), former);
}

} // namespace
} // namespace zelvar
