#include "zelvar/views/core/RowSelection.h"

#include "support/Test.h"
#include "zelvar/views/core/MergeSort.h"
#include "zelvar/views/core/RowNavigation.h"

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
    TenRows() {
        selection.SetRowCount(10);
        geometry.SetRows(10);
    }
    /// What is told of a click, or of a range that ends at `focus`.
    std::string Select(int first, int last, int focus) {
        selection.Select(Rows(first, last), focus);
        return hearer.Take();
    }
    std::string Mark(int row, bool on = true, unsigned bits = LVIS_SELECTED) {
        selection.SetState(row, on ? bits : 0U, bits);
        return hearer.Take();
    }
    /// "0 1 5"
    [[nodiscard]] std::string Selected() const {
        std::string text;
        for (int row = selection.Selected().NextFrom(0); row >= 0; row = selection.Selected().NextFrom(row + 1))
            text += (text.empty() ? "" : " ") + std::to_string(row);
        return text;
    }
    Hearer hearer;
    RowSelection selection{hearer};
    RowGeometry geometry;
    RowNavigation navigation{selection, geometry};
};

constexpr HeldKeys kCtrl{.ctrl = true};
constexpr HeldKeys kShift{.shift = true};

TEST_F(TenRows, PressesAndStepsSelectAsTheKeysSay) {
    enum What { Press, Menu, Move, Single };
    test::Rows<char const *, What, int, HeldKeys, char const *> const steps = {
        {"Shift before anything was pressed begins at the top", Press, 1, kShift, "0 1"},
        {"a press selects one row", Press, 4, {}, "4"},
        {"Shift extends", Press, 6, kShift, "4 5 6"},
        {"Shift goes from the same row to the other side", Press, 3, kShift, "3 4"},
        {"Ctrl adds", Press, 8, kCtrl, "3 4 8"},
        {"Ctrl takes away", Press, 4, kCtrl, "3 8"},
        {"Ctrl and Shift add a range", Press, 6, {.ctrl = true, .shift = true}, "3 4 5 6 8"},
        {"a menu is for the whole selection", Menu, 5, kShift, "3 4 5 6 8"},
        {"a menu elsewhere selects", Menu, 1, kCtrl, "1"},
        {"Shift takes the selection along", Move, 3, kShift, "1 2 3"},
        {"Ctrl moves the focus alone", Move, 7, kCtrl, "1 2 3"},
        {"a step selects", Move, 8, {}, "8"},
        {"one row only: Shift selects it", Single, 5, kShift, "5"},
        {"so does Ctrl", Single, 6, kCtrl, "6"},
        {"so does a step with Shift", Move, 7, kShift, "7"},
        {"and one with Ctrl", Move, 8, kCtrl, "8"},
    };
    for (auto const &[name, what, row, keys, selected] : steps) {
        selection.SetSingle(selection.IsSingle() || what == Single);
        if (what == Move)
            navigation.MoveTo(row, keys);
        else
            navigation.Press(row, keys, what == Menu ? RowNavigation::Button::Menu : RowNavigation::Button::Select);
        EXPECT_EQ(Selected(), selected) << name;
        EXPECT_EQ(selection.Focus(), row) << name;
    }
}

TEST_F(TenRows, StepsLeadFromTheFocusAndStayInTheList) {
    using Step = RowNavigation::Step;
    test::Rows<int, std::array<int, 6>> const cases = {
        {-1, {0, 0, 0, 4, 0, 9}}, {0, {0, 1, 0, 4, 0, 9}}, {5, {4, 6, 1, 9, 0, 9}}, {9, {8, 9, 5, 9, 0, 9}}};
    for (auto const &[focus, targets] : cases) {
        Mark(focus, focus >= 0, LVIS_FOCUSED);
        for (Step const step : {Step::Up, Step::Down, Step::PageUp, Step::PageDown, Step::First, Step::Last})
            EXPECT_EQ(navigation.Target(step, 4), targets[static_cast<std::size_t>(step)]) << focus;
    }
    geometry.SetRows(0);
    EXPECT_EQ(navigation.Target(Step::Down, 4), std::nullopt);
}

TEST_F(TenRows, AClickTellsTheRowItLeavesThenTheRowItTakesWithBothBits) {
    EXPECT_EQ(Select(2, 2, 2), "2:->FS");
    EXPECT_EQ(Select(5, 5, 5), "2:FS>- 5:->FS");
    EXPECT_EQ(Select(5, 5, 5), "");
    EXPECT_EQ(Mark(4), "4:->S");
    EXPECT_EQ(Select(4, 4, 4), "5:FS>- 4:S>FS") << "a row that was selected before it takes the focus";
    EXPECT_EQ(Select(4, 4, 7), "4:FS>S 7:->F") << "the focus alone";
    EXPECT_EQ(Select(4, 4, 8), "7:F>- 8:->F");
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
    EXPECT_EQ(Selected(), "4");
}

TEST_F(TenRows, RowsOutsideAreNobody) {
    EXPECT_EQ(Mark(10) + Mark(-2), "");
    Select(8, 30, 30);
    EXPECT_EQ(Selected(), "8 9");
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
    EXPECT_TRUE(selection.Selected().IsEmpty() && selection.Focus() == -1);
}

TEST(MergeSort, EqualsTurnRoundWhenTheQuestionSaysYesToThemAndStayOtherwise) {
    using Value = std::pair<int, char>;
    auto const sorted = [](auto const &comesAfter) {
        std::vector<Value> values{{2, 'a'}, {1, 'b'}, {2, 'c'}, {1, 'd'}, {2, 'e'}};
        MergeSort(values, comesAfter);
        std::string names;
        for (Value const &value : values)
            names += value.second;
        return names;
    };
    EXPECT_EQ(sorted([](Value const &a, Value const &b) { return a.first >= b.first; }), "dbeca");
    EXPECT_EQ(sorted([](Value const &a, Value const &b) { return a.first > b.first; }), "bdace");
    EXPECT_EQ(sorted([](Value const &, Value const &) { return true; }).size(), 5U) << "contradicted";
}

} // namespace
} // namespace zelvar
