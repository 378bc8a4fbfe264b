#include "zelvar/lists/CADIListCtrl.h"

#include "support/ReportStage.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/tables/ADIFile.h"

#include <climits>

namespace zelvar {
namespace {

/// What happens to a table, for whoever made it: the list owns the table itself.
struct Fate {
    int rows = INT_MAX; ///< that it has
    int failsAt = -1;   ///< row
    int lastAsked = -1; ///< row
    int asks = 0;
    bool isClosed = false;
    std::function<void()> duringStep = [] {};
};

/// A table of the columns "n", the row's number, and "t " in two lines, the same with a word before it.
class CountedTable : public ADIFile {
public:
    explicit CountedTable(Fate &fate) : ADIFile(DFile(""), "", tdFormatAccess_Read, nullptr, ""), m_fate(fate) {}
    ~CountedTable() override { m_fate.isClosed = true; }
    [[nodiscard]] int GetNumCols() const override { return 2; }
    [[nodiscard]] DString GetColName(int col) const override { return col == 0 ? "n" : "t\n"; }
    [[nodiscard]] bool SetRow(int row) override {
        ++m_fate.asks;
        m_fate.lastAsked = row;
        m_fate.duringStep();
        return row != m_fate.failsAt && row < m_fate.rows;
    }
    [[nodiscard]] bool HasFailed() const override { return m_fate.lastAsked == m_fate.failsAt; }
    [[nodiscard]] DString GetText(int col) const override {
        return (col == 0 ? "" : "row ") + std::to_string(m_fate.lastAsked);
    }

private:
    Fate &m_fate;
};

/// A list over such a table.
struct CountedList : testing::Test {
    CountedList() { list.AddAllColumns(); }
    Fate fate;
    CADIListCtrl list{new CountedTable(fate)};
};

TEST_F(CountedList, DerivedClassesChooseRowsAndColumnsAndSeeEachValue) {
    struct Choosy : CADIListCtrl {
        using CADIListCtrl::CADIListCtrl;
        bool OnFilterRow(int row) override { return row % 2 == 1; }
        bool OnFilterCol(int col, DString &name) override { return name += "!", col == 1; }
        void OnValue(int row, int col, int cacheRow) override {
            seen.push_back(std::to_string(row) + "/" + std::to_string(col) + "/" + std::to_string(cacheRow));
        }
        std::vector<DString> seen;
    };
    fate.rows = 4;
    Choosy choosy(new CountedTable(fate));
    choosy.AddAllColumns();
    choosy.ReadAllRows();
    EXPECT_EQ(choosy.GetColCaption(0) + choosy.GetColCaption(1), "IDt !");
    EXPECT_EQ(std::pair(choosy.GetColumnWidth(0), choosy.GetColumnWidth(1)), std::pair(50, 100));
    for (int row = 0; row < choosy.GetNumRow(); ++row) // their ids count what is kept
        choosy.seen.push_back(choosy.OnGetItemText(row, 0) + ": " + choosy.OnGetItemText(row, 1));
    EXPECT_THAT(choosy.seen, ElementsAre("1/0/0", "1/1/0", "3/0/1", "3/1/1", "0: row 1", "1: row 3"));
    choosy.AddAllColumns(); // too late
    EXPECT_EQ(choosy.GetNumCol(), 2);
    choosy.GetCacheItem(1, 0) = "of the application";
    EXPECT_EQ(choosy.OnGetItemText(1, 1), "of the application");
}

TEST_F(CountedList, ReadsAsFarAsAskedAndDoublesItsEstimateUntilTheTableEnds) {
    fate.rows = 100;
    EXPECT_EQ(fate.asks, 0);
    list.SetNumRow(10, 0);
    test::Rows<int, int, int, char const *> const cases = {
        {0, 10, 20, "row 0"},   {9, 10, 20, "row 9"},    {10, 20, 40, "row 10"},
        {39, 40, 80, "row 39"}, {70, 71, 142, "row 70"}, {-1, 71, 142, ""}}; // 39: as far as the end of the list
    for (auto const &[position, cached, rows, text] : cases) {
        EXPECT_EQ(list.OnGetItemText(position, 2), text) << position;
        EXPECT_EQ(list.GetCacheRows(), cached) << position;
        EXPECT_EQ(list.GetNumRow(), rows) << position;
        EXPECT_EQ(fate.lastAsked, cached - 1);
    }
    EXPECT_EQ(list.OnGetItemText(120, 2), ""); // behind the end
    EXPECT_EQ(list.GetNumRow(), 100);
    EXPECT_TRUE(fate.isClosed && list.IsReadThrough());
    EXPECT_EQ(list.OnGetItemText(99, 2), "row 99");
    EXPECT_TRUE(list.OnGetItemText(99, 3).empty() && list.GetID(100) == -1);
}

TEST_F(CountedList, WithoutRowsIsEmpty) {
    fate.rows = 0;
    list.SetNumRow(5, 0);
    EXPECT_EQ(list.OnGetItemText(0, 0), "");
    EXPECT_TRUE(list.GetNumRow() == 0 && fate.isClosed);
    CADIListCtrl none(nullptr);
    none.AddAllColumns();
    none.AddAllColumns(); // does nothing more
    none.ReadAllRows();
    none.Sort(0, true);
    EXPECT_EQ(none.GetNumCol(), 1);
}

TEST_F(CountedList, AClickOnAHeadingReadsAllSortsAndSelectsNothing) {
    fate.rows = 1000;
    list.SetNumRow(3, 0);
    test::Stage stage(list);
    stage.Click(1);
    // One that is switched off is remembered all the same; then the highest id comes on top, and "10" behind "1".
    test::Rows<bool, int, int, char const *> const clicks = {
        {false, 0, 0, "0"}, {true, 0, 0, "0"}, {true, 0, 0, "999"}, {true, 2, 2, "row 10"}, {true, 1, 0, "999"}};
    for (auto const &[isEnabled, heading, row, text] : clicks) {
        list.EnblSort(isEnabled);
        stage.ClickHeading(heading);
        EXPECT_EQ(list.OnGetItemText(row, heading), text);
        EXPECT_EQ(stage.Selected(), isEnabled ? "" : "1");
        EXPECT_EQ(fate.isClosed, isEnabled);
    }
}

TEST_F(CountedList, AFailureIsNoEndAndIsTriedAgainAfterAWhile) {
    fate.rows = 50;
    fate.failsAt = 30;
    list.SetNumRow(5, 0);
    list.Sort(1, true);
    EXPECT_FALSE(fate.isClosed);
    EXPECT_EQ(list.GetCacheRows(), 30);
    EXPECT_EQ(list.OnGetItemText(0, 1), "0"); // not sorted
    EXPECT_GT(list.GetNumRow(), 30);          // or nobody would ask for more
    int const asks = fate.asks;
    EXPECT_EQ(list.OnGetItemText(30, 1), "");
    EXPECT_EQ(fate.asks, asks);
    EXPECT_TRUE(test::Eventually([&] { return list.OnGetItemText(30, 1).empty() && fate.asks > asks; }));
    EXPECT_EQ(fate.lastAsked, 30); // the same row
    fate.failsAt = -1;
    list.ReadAllRows(); // at once
    EXPECT_TRUE(fate.isClosed && list.GetNumRow() == 50);
    EXPECT_EQ(list.OnGetItemText(30, 1), "30");
}

TEST_F(CountedList, EscapeStopsASortAndLeavesTheListAsItWas) {
    fate.rows = 10'000'000;
    list.SetNumRow(20, 0);
    test::Stage stage(list);
    stage.Click(1);
    fate.duringStep = [&] {
        if (fate.asks % 1000 == 0)
            QCoreApplication::postEvent(&list, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
    };
    stage.ClickHeading(2);
    fate.duringStep = [] {};
    EXPECT_FALSE(fate.isClosed);
    EXPECT_EQ(stage.Selected(), "1");
    EXPECT_EQ(list.GetID(5), 5);
    EXPECT_TRUE(!list.GetHeaderCtrl()->isSortIndicatorShown() && list.GetLastSort().IsSortAscnd(2));
    EXPECT_GT(list.GetNumRow(), list.GetCacheRows());
    fate.rows = list.GetCacheRows() + 1;
    stage.ClickHeading(0);
    EXPECT_TRUE(fate.isClosed);
    EXPECT_EQ(list.GetID(0), fate.rows - 1);
}

TEST_F(CountedList, PaintingWaitsForASlowTableOnceAndRowsFollow) {
    list.SetNumRow(1000, 0);
    int stopped = 0;
    fate.duringStep = [&] {
        // Answers when it is told to stop, and well otherwise.
        fate.failsAt = -1;
        while (stopped == 0 && RequestScope::Current() != nullptr && !RequestScope::Current()->IsStopped()) {
        }
        if (stopped++ == 0)
            fate.failsAt = fate.lastAsked;
    };
    test::Stage stage(list);
    EXPECT_TRUE(test::Eventually([&] { return list.GetCacheRows() > 10; }));
    EXPECT_GT(stopped, 1);
    EXPECT_LT(list.GetCacheRows(), 100); // no further than is seen
    EXPECT_EQ(list.OnGetItemText(10, 2), "row 10");
}

TEST_F(CountedList, ThePageIsThereWhereverTheThumbIsDraggedTo) {
    fate.rows = 400'000;
    list.SetNumRow(1, 0);
    test::Stage stage(list);
    QScrollBar &bar = *list.verticalScrollBar();
    while (!list.IsReadThrough()) {
        bar.setValue(bar.maximum());
        ASSERT_TRUE(test::Eventually(
            [&] { return list.IsReadThrough() || list.GetCacheRows() > list.GetTopIndex() + list.GetCountPerPage(); }));
    }
    EXPECT_EQ(list.GetNumRow(), 400'000);
    EXPECT_EQ(fate.asks, 400'001); // each row once
    bar.setValue(bar.maximum());
    stage.Click(399'999);
    EXPECT_EQ(stage.Selected(), "399999");
}

} // namespace
} // namespace zelvar
