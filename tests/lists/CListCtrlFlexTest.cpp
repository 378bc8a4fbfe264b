#include "zelvar/lists/CListCtrlFlex.h"

#include "support/ReportStage.h"
#include "zelvar/platform/ui/SystemColor.h"

#include <QtGui/QFont>

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

QColor PixelAt(CListCtrlFlex &list, int row, int x) {
    Rect const place = list.GetItemRect(row);
    return test::ColorAt(*list.viewport(), {x, place.bottom - 2});
}

TEST(CListCtrlFlex, ABackgroundOfZeroIsTextColouredWithoutAnImageAndBlackWithOne) {
    QPalette palette = QApplication::palette();
    QPalette changed = palette;
    changed.setColor(QPalette::Text, QColor(10, 90, 10));
    changed.setColor(QPalette::Base, QColor(250, 250, 200));
    QApplication::setPalette(changed);
    CListCtrlFlex list;
    Fill(list, ADICol_String);
    for (ColorRef const back : {0x000000U, 0xFFFFFFU, 0x0000FFU}) {
        list.InsertItem(list.GetItemCount(), "plain", 0, nullptr, 0, back, 0);
        list.InsertItem(list.GetItemCount(), "with an image", -1, 0, nullptr, 0, back, 0);
    }
    Stage const stage(list);
    QColor const expected[] = {changed.text().color(), Qt::black, changed.base().color(),
                               changed.base().color(), Qt::red,   Qt::red};
    for (int row = 0; row < 6; ++row)
        EXPECT_EQ(PixelAt(list, row, 150), expected[row]) << row;
    QApplication::setPalette(palette);
}

TEST(CListCtrlFlex, AListsOwnBackgroundServesRowsWithoutARecordAndTheRest) {
    CListCtrlFlex list;
    Fill(list, ADICol_String);
    static_cast<ReportView &>(list).InsertItem({.row = 0, .text = "plain"});
    Stage const stage(list);
    EXPECT_FALSE(list.IsBkColorSet());
    EXPECT_NE(list.SetBkColor(Rgb(1, 200, 3)), 0);
    EXPECT_TRUE(list.IsBkColorSet());
    EXPECT_EQ(PixelAt(list, 0, 150), QColor(1, 200, 3));
    EXPECT_EQ(PixelAt(list, 0, 390), QColor(1, 200, 3)); // beside the columns
    list.SetBkColor(0);
    EXPECT_EQ(PixelAt(list, 0, 150), ToQColor(SystemColor(COLOR_WINDOW)));
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
    test::Rows<char const *, ADIColType, std::vector<std::string>, char const *, char const *> const cases = {
        {"numbers, and what is none as the largest", ADICol_Double, {"12", "abc", "3"}, "3 12 abc", "abc 12 3"},
        {"whole numbers likewise", ADICol_Int, {"10", "9", "-1"}, "-1 9 10", "10 9 -1"},
        {"texts by bytes", ADICol_String, {"a9", "a10", "B"}, "B a10 a9", "a9 a10 B"},
        {"an unknown type is text", ADICol_None, {"9", "10"}, "10 9", "9 10"},
        {"an empty list", ADICol_Double, {}, "", ""},
        {"bytes are unsigned", ADICol_String, {"\xc3\xa9", "z"}, "z \xc3\xa9", "\xc3\xa9 z"}};
    for (auto const &[name, type, texts, ascending, descending] : cases) {
        SCOPED_TRACE(name);
        CListCtrlFlex list;
        Fill(list, type, texts);
        Stage stage(list);
        stage.ClickHeading(0);
        EXPECT_EQ(Column(list), ascending);
        EXPECT_TRUE(list.GetLastSort().IsSortedAscnd());
        stage.ClickHeading(0);
        EXPECT_EQ(Column(list), descending);
        EXPECT_FALSE(list.GetLastSort().IsSortedAscnd());
        EXPECT_EQ(list.GetLastSort().GetCol(), 0);
        list.EnblSort(false);
        stage.ClickHeading(0);
        EXPECT_EQ(Column(list), descending);
        EXPECT_TRUE(list.GetLastSort().IsSortedAscnd()) << "remembered all the same";
    }
}

TEST(CListCtrlFlex, EqualKeysTurnRoundWhenAscendingAndStayWhenDescending) {
    CListCtrlFlex list;
    Fill(list, ADICol_String, {"a", "b", "c", "d"});
    Fill(list, ADICol_Int);
    for (int row = 0; row < 4; ++row)
        list.SetItemText(row, 1, row == 2 ? "1" : "7");
    list.Sort(1, true);
    EXPECT_EQ(Column(list), "c d b a");
    list.Sort(1, false);
    EXPECT_EQ(Column(list), "d b a c");
}

TEST(CListCtrlFlex, OnlyTheStartOfACellCounts) {
    CListCtrlFlex list;
    Fill(list, ADICol_Double, {"0000000000000000000000019", "0000000000000000000000002"}); // larger by its last one
    list.Sort(0, true);
    EXPECT_EQ(Column(list), "0000000000000000000000002 0000000000000000000000019");
    std::string const same(255, 'x');
    CListCtrlFlex texts;
    Fill(texts, ADICol_String, {same + "b", same + "a"});
    texts.Sort(0, false); // equal for the sort: they stay
    EXPECT_EQ(texts.GetItemText(0, 0).back(), 'b');
}

TEST(CListCtrlFlex, ColumnsGoOneByOne) {
    CListCtrlFlex list;
    list.InsertColumn(0, ADICol_Int, "A", false, LVCFMT_LEFT, 50, 0);
    list.InsertColumn(1, ADICol_Double, "B", true, LVCFMT_LEFT, 50, 1);
    EXPECT_EQ(list.MoveColumn(7, 0), 1);
    EXPECT_EQ(list.DeleteColumn(0), 1);
    EXPECT_EQ(list.GetColType(0), ADICol_Double);
    list.RmvAllCol();
    EXPECT_EQ(list.GetColumnCount(), 0);
    EXPECT_EQ(list.GetColType(0), ADICol_String);
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
        QImage const image = list.viewport()->grab().toImage();
        int const ratio = static_cast<int>(image.devicePixelRatio());
        auto const turned = [&](int x, int width) { return list.isRightToLeft() ? width - 1 - x : x; };
        auto const inkIn = [&](int from, int to) {
            for (int x = from * ratio; x < to * ratio; ++x)
                for (int y = 0; y < list.RowHeight() * ratio; ++y)
                    if (image.pixelColor(turned(x, image.width()), y).lightness() < 100)
                        return true;
            return false;
        };
        EXPECT_FALSE(inkIn(16, 46)) << "the image stands at the edge, the text behind the indent";
        for (auto const &[col, start] : {std::pair{0, name}, {1, note}}) {
            EXPECT_TRUE(inkIn(start, start + 6)) << col;
            int const edge = turned(start, list.viewport()->width());
            Rect const label = list.GetSubItemRect(0, col, LVIR_LABEL);
            EXPECT_EQ(list.isRightToLeft() ? label.right - 1 : label.left, edge) << col;
            EXPECT_EQ(list.SubItemHitTest({edge, 5}).col, col);
        }
    }
}

} // namespace
} // namespace zelvar
