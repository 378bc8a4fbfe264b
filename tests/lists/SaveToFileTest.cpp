#include "support/TestFiles.h"
#include "zelvar/lists/CZelListCtrlVirtual.h"
#include "zelvar/lists/SaveTarget.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace zelvar {
namespace {

/// A list of three columns, and who is asked where it goes.
class SaveToFile : public testing::Test {
protected:
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
    EXPECT_EQ(asked[0].first, &list);
    EXPECT_EQ(asked[0].second, "Save contents");
}

TEST_F(SaveToFile, TheNameOfTheFileMayChooseAnotherFormat) {
    list.AddRow("a|1|2", nullptr);
    EXPECT_EQ(Saved(list, "a.tcsv", "CSV"), "Name,a\r\nNumber,1\r\nReal,2\r\n");
    DString const dbf = Saved(list, "a.DBF", "CSV");
    EXPECT_EQ(dbf.substr(0, 1), "\x03");
    EXPECT_EQ(dbf.substr(32 + 3 * 32 + 1), DString(" a1  2\x1A")); // a column of reals has room for a decimal
}

TEST_F(SaveToFile, ACancelOrAFailureIsSilentAndLeavesWhatIsThere) {
    list.AddRow("a|1|2", nullptr);
    target = std::nullopt;
    list.SaveToFile();
    EXPECT_EQ(asked.size(), 1U);
    EXPECT_EQ(Saved(list, "missing/a.csv", "CSV"), "");
    m_folder.Write("a.xlsx", "old");
    EXPECT_EQ(Saved(list, "a.xlsx", "XLSX"), "old");
    SetSaveTargetProvider(nullptr);
    list.SaveToFile();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.Path()), {}), 1);
}

TEST_F(SaveToFile, ALongCaptionIsCutBetweenCharacters) {
    CZelListCtrl one;
    DString const kept(510, 'x');
    one.AddCol(kept + "\xC3\xA4y", ADICol_String, false, 80, LVCFMT_LEFT);
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
