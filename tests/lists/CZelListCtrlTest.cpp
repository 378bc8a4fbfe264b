#include "zelvar/lists/CZelListCtrl.h"

#include "support/ReportStage.h"
#include "zelvar/lists/CZelListCtrlVirtual.h"
#include "zelvar/lists/SaveTarget.h"
#include "zelvar/platform/ui/SystemColor.h"

#include <filesystem>

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
            EXPECT_EQ(test::StrongestContrast(light, area) < 7, row >= 5 && row <= 8) << row; // grey texts
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
    list.SetText("first");
    EXPECT_EQ(list.GetItemText(0, 0) + list.GetItemText(0, 1), "first" + FormatDouble(2.345, 2) + " m");
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
    CZelListCtrl::RowInfo bold;
    list.SetStyle(&bold, RowStyleBold);
    list.AddRow("a|bold|c", &bold);
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
    EXPECT_TRUE(list.GetColumnWidth(0) == 80 && list.updatesEnabled());
    list.resize(120, 200); // no room left: its content counts
    EXPECT_TRUE(test::Eventually([&] { return list.GetColumnWidth(1) < 80; }));
    list.ResizeColToFit(1);
    int const fitted = list.GetColumnWidth(1);
    EXPECT_GT(fitted, list.fontMetrics().horizontalAdvance("bold")) << "in the font of its row";
    list.resize(800, 200);
    AwaitFit();
    EXPECT_EQ(list.GetColumnWidth(1), fitted) << "no longer enlarged";
}

TEST(CZelListCtrl, WidthsAreKeptByCaptionOrNumber) {
    CZelListCtrl list;
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
    EXPECT_TRUE(list.GetColumnWidth(0) == 50 && list.GetColumnWidth(1) == 101);
    EXPECT_EQ(list.GetColumnWidth(2), 102) << "equal captions share one width, the later one";
}

TEST(CZelListCtrl, TheSelectionIsReadWrittenAndClickedUnlessSeveralRowsAreSelected) {
    Columned list(2);
    for (std::uint64_t row = 0; row < 6; ++row) {
        list.AddRow();
        list.SetData(row * 10);
    }
    Stage stage(list);
    for (int const row : {3, 1, 6, -1})
        list.SetSlct(row, true);
    EXPECT_TRUE(list.GetFrstSlct() == 1 && list.GetCrntSlct() == 1);
    EXPECT_TRUE(list.SetSlctByItemData(40, true) == 4 && list.SetSlctByItemData(41, true) == -1);
    DVector<int> rows;
    list.GetSlct(rows);
    EXPECT_EQ(rows, (DVector<int>{1, 3, 4}));
    list.SetSlct(3, false);
    list.GetSlct(rows);
    EXPECT_EQ(rows, (DVector<int>{1, 4, 4})) << "the vector is not shrunk";
    list.ClearSlct();
    EXPECT_EQ(stage.Selected(), "");
    test::Rows<int, Qt::KeyboardModifiers, Qt::MouseButton, char const *> const clicks = {
        {1, {}, Qt::LeftButton, "1"},
        {3, {}, Qt::RightButton, "3"},
        {5, Qt::ControlModifier, Qt::LeftButton, "3 5"},
        {5, Qt::ControlModifier, Qt::LeftButton, "3"}};
    for (auto const &[row, modifiers, button, selected] : clicks) {
        stage.Click(row, modifiers, button, 1);
        EXPECT_EQ(stage.Selected(), selected);
        EXPECT_EQ(list.GetCrntRow(), row == 1 ? 1 : 3);
    }
    list.SetMultiSlct(false);
    list.SetSlct(0, true);
    EXPECT_EQ(stage.Selected(), "0");
}

TEST(CZelListCtrl, ResetGoesBackToTheStart) {
    Columned list(2);
    list.CreateImages();
    CZelImageList::RegisterIcon(12, "no-such-icon", "star");
    list.AddRow("a|b", nullptr);
    list.SetIcon(12);
    EXPECT_EQ(list.GetItemImage(0), 0);
    list.SetImage(0, 4);
    EXPECT_EQ(list.GetItemImage(0), 4);
    Stage stage(list);
    stage.ClickHeading(1);
    list.EnlargeCol(1, true);
    list.Reset();
    EXPECT_EQ(list.GetNumRow() + list.GetNumCol() + list.GetItemCount() + list.GetColumnCount() + list.GetCrntRow(), 0);
    EXPECT_EQ(list.GetLastSort().GetCol(), -2);
    EXPECT_TRUE(list.GetImageList() == nullptr && !list.GetHeaderCtrl()->isSortIndicatorShown());
    list.Add(2);
    list.resize(800, 200);
    AwaitFit();
    EXPECT_EQ(list.GetColumnWidth(1), 80) << "no longer enlarged";
}

struct Squares : CZelListCtrlVirtual {
    DString OnGetItemText(int row, int col) override { return col == 0 ? std::to_string(row * row) : empty; }
    int OnGetItemImg(int row, int) override { return row; }
    void Sort(int col, bool ascending) override { sorted = std::to_string(col) + (ascending ? " up" : " down"); }
    using CZelListCtrlVirtual::OnGetDispInfo;
    DString empty;
    std::string sorted;
};

TEST(CZelListCtrlVirtual, CellsAndSortsAreAskedFor) {
    Columned<Squares> list(2);
    list.SetNumRow(1000, 0);
    EXPECT_EQ(list.GetNumRow(), 1000);
    EXPECT_EQ(list.GetItemText(9, 0), "81");
    EXPECT_EQ(list.GetItemImage(9), 9);
    EXPECT_EQ(list.GetItemData(9), 0U);
    std::array<char, 4> buffer{'x', 'x', 'x', 'x'};
    DispInfo info{.iItem = 200, .wantsText = true, .pszText = buffer.data()};
    for (auto const &[room, text] : {std::pair{4, "400"}, {1, ""}, {0, ""}}) { // of 40000
        info.cchTextMax = room;
        list.OnGetDispInfo(info);
        EXPECT_STREQ(info.pszText, text);
    }
    info.iSubItem = 1;
    list.OnGetDispInfo(info);
    EXPECT_EQ(info.pszText, nullptr);
    Stage stage(list);
    for (char const *const sorted : {"1 up", "1 down"}) {
        stage.ClickHeading(1);
        EXPECT_EQ(list.sorted, sorted);
        EXPECT_EQ(list.GetLastSort().GetCol(), 1);
    }
    list.Create(LVS_SINGLESEL, {0, 0, 100, 100}, nullptr, 5);
    EXPECT_NE(list.GetStyle() & LVS_OWNERDATA, 0U);
}

/// A list of three columns, and who is asked where it goes.
struct SaveToFile : testing::Test {
    SaveToFile() {
        SetSaveTargetProvider([this](QWidget *parent, char const *title) {
            asked.emplace_back(parent, title);
            return target;
        });
        list.AddCol("Name", ADICol_String, false, 80, LVCFMT_LEFT);
        list.AddCol("Number", ADICol_Int, false, 80, LVCFMT_LEFT);
        list.AddCol("Real", ADICol_Double, false, 80, LVCFMT_LEFT);
    }
    ~SaveToFile() override { SetSaveTargetProvider(nullptr); }
    DString Saved(CZelListCtrl &what, DString const &name, DString const &format) {
        target = TableTarget{.path = m_folder / name, .formatId = format};
        what.SaveToFile();
        return test::ReadFile(m_folder / name);
    }

    CZelListCtrl list;
    std::optional<TableTarget> target;
    std::vector<std::pair<QWidget *, DString>> asked;
    test::TempFolder m_folder;
};

TEST_F(SaveToFile, CellsGoOutAsTheirColumnsReadThem) {
    for (char const *row : {"a, b|12|0.5", "|  -7 apples|1e3x", "---|---|UNDEFINED", "c|Undefined|--", "d||",
                            "e|99999999999999999999|-1e999", "f|+5|+.25", "g|3.7|nan"})
        list.AddRow(row, nullptr);
    DString const expected = "Name,Number,Real\r\n\"a, b\",12,0.5\r\n,-7,1000\r\n---,---,UNDEFINED\r\n"
                             "c,Undefined,0\r\nd,0,0\r\n"
                             "e,9223372036854775807,-1.7976931348623157e+308\r\nf,5,0.25\r\ng,3,nan\r\n";
    for (char const *format : {"CSV", "", "TXT"})
        EXPECT_EQ(Saved(list, "a", format), expected) << format;
    ASSERT_EQ(asked.size(), 3U);
    EXPECT_TRUE(asked[0].first == &list && asked[0].second == "Save contents");
}

TEST_F(SaveToFile, TheNameOfTheFileMayChooseAnotherFormat) {
    list.AddRow("a|1|2", nullptr);
    EXPECT_EQ(Saved(list, "a.tcsv", "CSV"), "Name,a\r\nNumber,1\r\nReal,2\r\n");
    DString const dbf = Saved(list, "a.DBF", "CSV");
    EXPECT_EQ(dbf.substr(32 + 3 * 32 + 1), DString(" a1  2\x1A")); // a column of reals has room for a decimal
}

TEST_F(SaveToFile, ACancelOrAFailureIsSilentAndLeavesWhatIsThere) {
    list.AddRow("a|1|2", nullptr);
    target = std::nullopt;
    list.SaveToFile();
    EXPECT_EQ(asked.size(), 1U);
    m_folder.Write("a.xlsx", "old");
    EXPECT_EQ(Saved(list, "a.xlsx", "XLSX"), "old");
    SetSaveTargetProvider(nullptr);
    list.SaveToFile();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.Path()), {}), 1);
}

TEST_F(SaveToFile, ALongCaptionIsCutBetweenCharacters) {
    CZelListCtrl one;
    DString const kept(510, 'x');
    one.AddCol(kept + "\xC3\xA9y", ADICol_String, false, 80, LVCFMT_LEFT);
    EXPECT_EQ(Saved(one, "a.csv", "CSV"), kept + "\r\n");
    CZelListCtrl none;
    none.AddRow();
    EXPECT_EQ(Saved(none, "b.csv", "CSV"), "");
}

TEST_F(SaveToFile, AListThatGuessesItsRowsUntilItMeetsTheEndIsSavedWholeAndWithoutARowTooMany) {
    struct : CZelListCtrlVirtual {
        DString OnGetItemText(int row, int) override {
            if (row >= 11)
                SetNumRow(11, 0);
            else if (row + 1 == GetNumRow())
                SetNumRow(GetNumRow() * 2, 0);
            return row < 11 ? std::to_string(row) : DString();
        }
    } growing;
    growing.AddCol("Row", ADICol_Int, false, 80, LVCFMT_LEFT);
    growing.SetNumRow(4, 0);
    EXPECT_EQ(Saved(growing, "a.tcsv", "TCSV"), "Row,0,1,2,3,4,5,6,7,8,9,10\r\n");
}

} // namespace
} // namespace zelvar
