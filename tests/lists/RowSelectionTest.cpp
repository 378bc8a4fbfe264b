#include "zelvar/lists/core/RowSelection.h"

#include "zelvar/base/DString.h"
#include "zelvar/lists/core/MergeSort.h"

#include <gtest/gtest.h>

#include <string>

namespace zelvar {
namespace {

/// Writes down what it is told: "3:-S" row 3 from nothing to selected, "2-5:S-" a range the other way, F for focus.
class Hearer final : public RowSelection::Listener {
public:
    void RowStateChanged(int row, unsigned oldState, unsigned newState) override {
        Note(std::to_string(row), oldState, newState);
    }
    void RangeStateChanged(int first, int last, unsigned oldState, unsigned newState) override {
        Note(std::to_string(first) + "-" + std::to_string(last), oldState, newState);
    }
    std::string Take() { return std::exchange(m_heard, {}); }

private:
    static std::string Name(unsigned state) {
        char const *const names[] = {"-", "F", "S", "FS"};
        return names[state & 3U];
    }
    void Note(std::string const &rows, unsigned oldState, unsigned newState) {
        m_heard += (m_heard.empty() ? "" : " ") + rows + ":" + Name(oldState) + ">" + Name(newState);
    }
    std::string m_heard;
};

IntervalSet Rows(int first, int last) {
    IntervalSet set;
    set.Insert(first, last);
    return set;
}

struct TenRows : testing::Test {
    TenRows() { selection.SetRowCount(10); }
    Hearer hearer;
    RowSelection selection{hearer};
};

TEST_F(TenRows, AClickTellsTheRowItLeavesThenTheRowItTakesWithBothBits) {
    selection.Select(Rows(2, 2), 2);
    EXPECT_EQ(hearer.Take(), "2:->FS");
    selection.Select(Rows(5, 5), 5);
    EXPECT_EQ(hearer.Take(), "2:FS>- 5:->FS");
    selection.Select(Rows(5, 5), 5);
    EXPECT_EQ(hearer.Take(), "");
}

TEST_F(TenRows, ARowSelectedWithoutTheFocusIsToldAgainWhenItTakesIt) {
    selection.SetState(4, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(hearer.Take(), "4:->S");
    selection.Select(Rows(4, 4), 4);
    EXPECT_EQ(hearer.Take(), "4:S>FS");
}

TEST_F(TenRows, RangesAreToldAtOnceWhereWanted) {
    selection.SetTellsRanges(true);
    selection.Select(Rows(3, 3), 3);
    hearer.Take();
    selection.Select(Rows(3, 7), 7);
    EXPECT_EQ(hearer.Take(), "3:FS>S 4-6:->S 7:->FS");
    selection.Select(Rows(6, 6), 6);
    EXPECT_EQ(hearer.Take(), "3-5:S>- 7:FS>- 6:S>FS");
    selection.SetState(-1, 0, LVIS_SELECTED | LVIS_FOCUSED);
    EXPECT_EQ(hearer.Take(), "6:FS>F 6:F>-");
}

TEST_F(TenRows, RowByRowIsTheRuleForStoredRows) {
    selection.SetState(-1, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(selection.Selected().Count(), 10);
    EXPECT_EQ(hearer.Take().substr(0, 11), "0:->S 1:->S");
}

TEST_F(TenRows, SingleSelectionLetsTheOtherRowGo) {
    selection.SetSingle(true);
    selection.SetState(2, LVIS_SELECTED, LVIS_SELECTED);
    selection.SetState(6, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(hearer.Take(), "2:->S 2:S>- 6:->S");
    selection.Select(Rows(4, 9), 9);
    EXPECT_EQ(selection.Selected().Count(), 1);
    EXPECT_TRUE(selection.Selected().Contains(4));
}

TEST_F(TenRows, RowsOutsideAreNobody) {
    selection.SetState(10, LVIS_SELECTED, LVIS_SELECTED);
    selection.SetState(-2, LVIS_SELECTED, LVIS_SELECTED);
    selection.Select(Rows(8, 30), 30);
    EXPECT_EQ(selection.Selected().Count(), 2);
    EXPECT_EQ(selection.Focus(), -1);
}

TEST_F(TenRows, StatesGoWithTheRows) {
    selection.Select(Rows(4, 5), 5);
    selection.InsertRows(5, 2);
    EXPECT_EQ(selection.Focus(), 7);
    EXPECT_EQ(selection.Selected().Count(), 2);
    selection.RemoveRows(7, 1);
    EXPECT_EQ(selection.Focus(), 7); // the next row takes over
    EXPECT_EQ(selection.Selected().Count(), 1);
    selection.Reorder({10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
    EXPECT_TRUE(selection.Selected().Contains(6));
    EXPECT_EQ(selection.Focus(), 3);
    selection.SetRowCount(3);
    EXPECT_TRUE(selection.Selected().IsEmpty());
    EXPECT_EQ(selection.Focus(), -1);
}

TEST(MergeSort, EqualsTurnRoundWhenTheQuestionSaysYesToThemAndStayOtherwise) {
    using Value = std::pair<int, char>;
    std::vector<Value> const start{{2, 'a'}, {1, 'b'}, {2, 'c'}, {1, 'd'}, {2, 'e'}};
    auto const names = [](std::vector<Value> const &values) {
        std::string text;
        for (Value const &value : values)
            text += value.second;
        return text;
    };
    auto turned = start;
    auto kept = start;
    auto contradicted = start;
    MergeSort(turned, [](Value const &a, Value const &b) { return a.first >= b.first; });
    MergeSort(kept, [](Value const &a, Value const &b) { return a.first > b.first; });
    EXPECT_EQ(names(turned), "dbeca");
    EXPECT_EQ(names(kept), "bdace");
    MergeSort(contradicted, [](Value const &, Value const &) { return true; });
    EXPECT_EQ(contradicted.size(), start.size());
}

} // namespace
} // namespace zelvar
