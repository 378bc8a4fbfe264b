#include "zelvar/lists/CZelListCtrl.h"

#include "support/ReportStage.h"
#include "zelvar/lists/CZelListCtrlVirtual.h"
#include "zelvar/platform/ui/SystemColor.h"

namespace zelvar {
namespace {

using platform::SystemColor;
using test::Stage;

/// A list of columns of texts.
template <class List = CZelListCtrl>
struct Columned : List {
    explicit Columned(int columns) { Add(columns); }
    void Add(int columns) {
        for (int col = 0; col < columns; ++col)
            this->AddCol("Col " + std::to_string(col), ADICol_String, false, 80, LVCFMT_LEFT);
    }
};

TEST(CZelListCtrl, ATextMakesARowOfItsPieces) {
    Columned list(2);
    for (int row = 0; auto const &[text, first, second] : test::Rows<char const *, char const *, char const *>{
                          {"a|b|c", "a", "b"}, {"a|", "a", ""}, {"a||c", "a", ""}, {"", "", ""}, {"|b", "", "b"}}) {
        EXPECT_EQ(list.AddRow(text, nullptr), row);
        EXPECT_EQ(list.GetCrntRow(), row);
        EXPECT_EQ(list.GetItemText(row, 0) + "|" + list.GetItemText(row, 1), DString(first) + "|" + second) << text;
        EXPECT_EQ(list.GetNumRow(), ++row);
    }
    EXPECT_EQ(list.AddRowV("%d|%s", 7, "x"), 5);
    EXPECT_EQ(list.GetItemText(5, 1), "x");
    CZelListCtrl bare;
    EXPECT_EQ(bare.AddRow("a|b", nullptr), 0);
    EXPECT_EQ(bare.GetItemText(0, 0), "a");
}

TEST(CZelListCtrl, RowsOfARowInfoCarryItsData) {
    Columned list(1);
    CZelListCtrl::RowInfo const info{.data = 99};
    list.AddRow();
    list.AddRowV(&info, "%s", "b");
    EXPECT_EQ(list.GetData(), 99U);
    EXPECT_EQ(list.GetRowIndex(98), -1);
    list.InsertRow(0);
    EXPECT_EQ(list.GetRowIndex(99), 2);
    for (int const row : {1, 17}) { // 17: no such row
        list.SetCrntRow(1);
        list.RmvRow(row);
        EXPECT_EQ(list.GetCrntRow(), 0);
        EXPECT_EQ(list.GetNumRow(), 2);
    }
}

TEST(CZelListCtrl, StylesMakeColoursAndFont) {
    Columned list(1);
    ColorRef const window = SystemColor(COLOR_WINDOW);
    ColorRef const shaded = Rgb(230, 230, 215);
    ColorRef const accent = Rgb(215, 200, 170);
    ColorRef const greyShaded = Rgb(235, 235, 225);
    std::tuple<unsigned, ColorRef, bool, bool> const cases[] = {
        {0, window, false, false},    {1, shaded, false, false}, {2, accent, false, false},
        {3, accent, false, false},    {4, window, false, true},  {8, window, true, false},
        {9, greyShaded, true, false}, {10, accent, true, false}, {11, greyShaded, true, false}};
    for (auto const &[style, back, grey, bold] : cases) {
        CZelListCtrl::RowInfo info{.image = 5, .data = 6, .indent = 7};
        list.SetStyle(&info, style);
        EXPECT_EQ(info.bkColor, back) << style;
        EXPECT_EQ(info.textColor, grey ? Rgb(128, 128, 128) : SystemColor(COLOR_WINDOWTEXT)) << style;
        EXPECT_EQ(info.font != nullptr && info.font->bold(), bold) << style;
        EXPECT_EQ(info.image + static_cast<int>(info.data) + info.indent, 18);
        list.AddRowStyle("gMW", style);
    }
    list.AddRow(); // black on white, without a style
    list.SetColText(0, DString("gMW"));
    list.resize(200, 400);
    list.show();
    QImage const light = test::PictureOf(list);
    {
        test::DarkPalette const dark;
        QImage const picture = test::PictureOf(list);
        for (int row = 0; row < list.GetNumRow(); ++row) {
            Rect const at = list.GetItemRect(row);
            QRect const area = QRect(at.left + 1, at.top + 2, 30, at.Height() - 4).translated(list.viewport()->pos());
            EXPECT_GE(test::StrongestContrast(picture, area), 4.5) << row;
            EXPECT_LT(picture.pixelColor(area.right() + 40, area.bottom()).lightness(), 110) << row;
        }
    }
    EXPECT_EQ(test::PictureOf(list), light); // and back
}

TEST(CZelListCtrl, CellsAreFormatted) {
    Columned list(2);
    list.AddRow();
    for (auto const &[kilobytes, text] :
         {std::pair{0, "0 KB"}, {1023, "1023 KB"}, {1024, "1.00 MB"}, {1536, "1.50 MB"}}) {
        list.SetColKByte(1, kilobytes);
        EXPECT_EQ(list.GetItemText(0, 1), text);
    }
    list.SetColText(1, 2.345, 2, "m");
    EXPECT_EQ(list.GetItemText(0, 1), FormatDouble(2.345, 2) + " m");
    list.SetText("first");
    EXPECT_EQ(list.GetItemText(0, 0), "first");
}

/// Until a list that is resized now has fitted its columns: what was due before has happened.
void AwaitFit() {
    Columned later(2);
    Stage const stage(later, 500, 200);
    later.EnlargeCol(0, true);
    later.resize(700, 200);
    EXPECT_TRUE(test::Eventually([&] { return later.ColumnsWidth() == later.GetClientRect().Width(); }));
}

TEST(CZelListCtrl, EnlargedColumnsTakeTheRestAgainAfterEachResize) {
    Columned list(3);
    list.AddRow("a|b|c", nullptr);
    list.EnlargeCol(1, false);
    int const hidden = list.GetColumnWidth(1);
    list.resize(800, 200);
    AwaitFit();
    EXPECT_EQ(list.GetColumnWidth(1), hidden) << "not while it is hidden";
    Stage const stage(list, 500, 200);
    list.EnlargeCol(1, true);
    EXPECT_EQ(list.ColumnsWidth(), list.GetClientRect().Width());
    list.resize(700, 200);
    EXPECT_TRUE(test::Eventually([&] { return list.ColumnsWidth() == list.GetClientRect().Width(); }));
    EXPECT_EQ(list.GetColumnWidth(0), 80);
    list.resize(120, 200); // no room left: its content counts
    EXPECT_TRUE(test::Eventually([&] { return list.GetColumnWidth(1) < 80; }));
    list.ResizeColToFit(1);
    int const fitted = list.GetColumnWidth(1);
    list.resize(800, 200);
    AwaitFit();
    EXPECT_EQ(list.GetColumnWidth(1), fitted) << "no longer enlarged";
}

TEST(CZelListCtrl, WidthsAreKeptByCaptionOrNumber) {
    CZelListCtrl list;
    EXPECT_FALSE(list.HasSavedColWidth());
    list.SaveColWidth();
    EXPECT_FALSE(list.HasSavedColWidth());
    auto const add = [&list](char const *first) {
        list.Reset();
        for (char const *caption : {first, "", "A"})
            list.AddCol(caption, ADICol_String, false, 50, LVCFMT_LEFT);
    };
    add("A");
    for (int col = 0; col < 3; ++col)
        list.SetColWidth(col, 100 + col);
    list.SaveColWidth();
    add("New");
    list.RestoreColWidth();
    int const widths[] = {50, 101, 102}; // equal captions share one width, the later one
    for (int col = 0; col < 3; ++col)
        EXPECT_EQ(list.GetColumnWidth(col), widths[col]);
}

TEST(CZelListCtrl, AClickSelectsUnlessSeveralRowsAreSelected) {
    Columned list(2);
    for (int row = 0; row < 6; ++row)
        list.AddRow("x|y", nullptr);
    Stage stage(list);
    stage.Click(1, {}, Qt::LeftButton, 1);
    EXPECT_EQ(stage.Selected(), "1");
    EXPECT_EQ(list.GetCrntRow(), 1);
    stage.Click(3, {}, Qt::RightButton);
    for (char const *const selected : {"3 5", "3"}) {
        stage.Click(5, Qt::ControlModifier);
        EXPECT_EQ(stage.Selected(), selected);
    }
    list.ClearSlct();
    EXPECT_EQ(stage.Selected(), "");
}

TEST(CZelListCtrl, TheSelectionIsReadAndWritten) {
    Columned list(1);
    for (std::uint64_t row = 0; row < 5; ++row) {
        list.AddRow();
        list.SetData(row * 10);
    }
    for (int const row : {3, 1, 5, -1})
        list.SetSlct(row, true);
    EXPECT_EQ(list.GetFrstSlct(), 1);
    EXPECT_EQ(list.GetCrntSlct(), 1);
    EXPECT_EQ(list.SetSlctByItemData(40, true), 4);
    EXPECT_EQ(list.SetSlctByItemData(41, true), -1);
    DVector<int> rows;
    list.GetSlct(rows);
    EXPECT_EQ(rows, (DVector<int>{1, 3, 4}));
    list.SetSlct(3, false);
    list.GetSlct(rows);
    EXPECT_EQ(rows, (DVector<int>{1, 4, 4})) << "the vector is not shrunk";
    list.SetMultiSlct(false);
    EXPECT_FALSE(list.IsMultiSlct());
    list.SetSlct(0, true);
    EXPECT_EQ(list.GetNumSlct(), 1);
}

TEST(CZelListCtrl, ResetGoesBackToTheStart) {
    Columned list(2);
    list.CreateImages();
    CZelImageList::RegisterIcon(12, "no-such-icon", "star");
    list.AddRow("a|b", nullptr);
    list.SetIcon(12);
    EXPECT_EQ(list.GetItemImage(0), 0);
    Stage stage(list);
    stage.ClickHeading(1);
    EXPECT_EQ(list.GetLastSort().GetCol(), 1);
    list.EnlargeCol(1, true);
    list.Reset();
    EXPECT_EQ(list.GetNumRow() + list.GetNumCol() + list.GetItemCount() + list.GetColumnCount(), 0);
    EXPECT_EQ(list.GetLastSort().GetCol(), -2);
    EXPECT_EQ(list.GetImageList(), nullptr);
    EXPECT_FALSE(list.GetHeaderCtrl()->isSortIndicatorShown());
    list.Add(2);
    list.resize(800, 200);
    AwaitFit();
    EXPECT_EQ(list.GetColumnWidth(1), 80) << "no longer enlarged";
}

class Squares : public CZelListCtrlVirtual {
public:
    DString OnGetItemText(int row, int col) override { return col == 0 ? std::to_string(row * row) : empty; }
    int OnGetItemImg(int row, int) override { return row; }
    void Sort(int col, bool ascending) override { sorted = std::to_string(col) + (ascending ? " up" : " down"); }
    using CZelListCtrlVirtual::OnGetDispInfo;
    DString empty;
    std::string sorted;
};

TEST(CZelListCtrlVirtual, CellsAreAskedFor) {
    Columned<Squares> list(2);
    list.SetNumRow(1000, 0);
    EXPECT_EQ(list.GetNumRow(), 1000);
    EXPECT_EQ(list.GetItemText(9, 0), "81");
    EXPECT_EQ(list.GetItemImage(9), 9);
    EXPECT_EQ(list.GetItemData(9), 0U);
    std::array<char, 4> buffer{'x', 'x', 'x', 'x'};
    DispInfo info{.iItem = 200, .wantsText = true, .pszText = buffer.data(), .cchTextMax = 4};
    list.OnGetDispInfo(info);
    EXPECT_STREQ(info.pszText, "400"); // of 40000
    info.iSubItem = 1;
    list.OnGetDispInfo(info);
    EXPECT_EQ(info.pszText, nullptr);
}

TEST(CZelListCtrlVirtual, AHeadingAsksTheDerivedClassToSort) {
    Columned<Squares> list(2);
    list.SetNumRow(5, 0);
    Stage stage(list);
    for (char const *const sorted : {"1 up", "1 down"}) {
        stage.ClickHeading(1);
        EXPECT_EQ(list.sorted, sorted);
    }
    EXPECT_EQ(list.GetItemText(2, 0), "4");
    EXPECT_EQ(list.GetLastSort().GetCol(), 1);
    list.Create(LVS_SINGLESEL, {0, 0, 100, 100}, nullptr, 5);
    EXPECT_NE(list.GetStyle() & LVS_OWNERDATA, 0U);
}

} // namespace
} // namespace zelvar
