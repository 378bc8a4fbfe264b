#include "zelvar/views/core/RowSelection.h"

#include "zelvar/base/DString.h"
#include "zelvar/views/core/MergeSort.h"

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
    /// What is told of a click, or of a range that ends at `focus`.
    std::string Select(int first, int last, int focus) {
        selection.Select(Rows(first, last), focus);
        return hearer.Take();
    }
    std::string Mark(int row, bool on = true, unsigned bits = LVIS_SELECTED) {
        selection.SetState(row, on ? bits : 0U, bits);
        return hearer.Take();
    }
    Hearer hearer;
    RowSelection selection{hearer};
};

TEST_F(TenRows, AClickTellsTheRowItLeavesThenTheRowItTakesWithBothBits) {
    EXPECT_EQ(Select(2, 2, 2), "2:->FS");
    EXPECT_EQ(Select(5, 5, 5), "2:FS>- 5:->FS");
    EXPECT_EQ(Select(5, 5, 5), "");
    EXPECT_EQ(Mark(4), "4:->S");
    EXPECT_EQ(Select(4, 4, 4), "5:FS>- 4:S>FS") << "a row that was selected before it takes the focus";
}

TEST_F(TenRows, RangesAreToldAtOnceWhereWantedAndRowByRowElsewhere) {
    EXPECT_EQ(Mark(-1).substr(0, 11), "0:->S 1:->S");
    EXPECT_EQ(selection.Selected().Count(), 10);
    selection.SetTellsRanges(true);
    Select(3, 3, 3);
    EXPECT_EQ(Select(3, 7, 7), "3:FS>S 4-6:->S 7:->FS");
    EXPECT_EQ(Select(6, 6, 6), "3-5:S>- 7:FS>- 6:S>FS");
    EXPECT_EQ(Mark(-1, false, LVIS_SELECTED | LVIS_FOCUSED), "6:FS>F 6:F>-");
}

TEST_F(TenRows, SingleSelectionLetsTheOtherRowGo) {
    selection.SetSingle(true);
    EXPECT_EQ(Mark(2), "2:->S");
    EXPECT_EQ(Mark(6), "2:S>- 6:->S");
    Select(4, 9, 9);
    EXPECT_EQ(selection.Selected().Count(), 1);
    EXPECT_TRUE(selection.Selected().Contains(4));
}

TEST_F(TenRows, RowsOutsideAreNobody) {
    EXPECT_EQ(Mark(10) + Mark(-2), "");
    Select(8, 30, 30);
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
