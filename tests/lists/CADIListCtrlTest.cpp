#include "zelvar/lists/CADIListCtrl.h"

#include "support/ReportStage.h"
#include "zelvar/data/IRowStore.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/tables/ADIFile.h"

#include <QtWidgets/QProgressBar>

#include <climits>
#include <numeric>

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

/// The rows of a table of that many that says that it is large: "n" counts in sevens, "t " has the row's number.
class CountedStore : public IRowStore {
public:
    explicit CountedStore(Fate &fate) : m_fate(fate) {}
    [[nodiscard]] TableExtent const &Known() const override { return m_known; }
    [[nodiscard]] bool CountOn(std::int64_t rows, DError *) override {
        m_known.isEnd = rows >= m_fate.rows;
        m_known.rows = std::min<std::int64_t>(rows, m_fate.rows);
        m_known.bytes = m_known.rows * 1'000'000;
        return m_fate.failsAt < 0;
    }
    [[nodiscard]] bool Read(std::vector<std::int64_t> const &wanted, ADIRows &rows, DError *) override {
        ++m_fate.asks;
        rows = {};
        for (std::int64_t const row : wanted)
            for (DString const &text : {std::to_string(row % 7), "row " + std::to_string(row)}) {
                rows.texts += text;
                rows.ends.push_back(static_cast<std::uint32_t>(rows.texts.size()));
            }
        rows.count = static_cast<int>(wanted.size());
        return m_fate.failsAt < 0;
    }
    [[nodiscard]] bool Sort(int col, bool ascending, RowOrder &order, DError *) override {
        auto const key = [&](std::uint32_t row) { return col == 0 ? 6 - row % 7 : row; };
        order = RowOrder(static_cast<std::size_t>(m_known.rows));
        std::iota(order.rows.begin(), order.rows.end(), 0U);
        std::ranges::stable_sort(order.rows, [&](std::uint32_t a, std::uint32_t b) {
            return ascending ? key(a) < key(b) : key(a) > key(b);
        });
        for (std::size_t place = 1; place < order.rows.size(); ++place)
            order.SetTied(place, key(order.rows[place]) == key(order.rows[place - 1]));
        RequestScope::NoteProgress(1, 3);
        m_fate.duringStep();
        return RequestScope::Current() != nullptr && !RequestScope::Current()->IsStopped();
    }

private:
    Fate &m_fate;
    TableExtent m_known;
};

/// A table whose rows are read again.
struct StoredTable : CountedTable {
    explicit StoredTable(Fate &fate) : CountedTable(fate), store(std::make_shared<CountedStore>(fate)) {}
    [[nodiscard]] std::shared_ptr<IRowStore> GetRowStore() override { return store; }
    std::shared_ptr<IRowStore> store;
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

/// A list over a large table, of which no row has been asked for by the table's own cursor.
struct StoredList : testing::Test {
    StoredList() { list.AddAllColumns(); }
    [[nodiscard]] std::vector<DString> Ids(int count) {
        std::vector<DString> ids;
        for (int row = 0; row < count; ++row)
            ids.push_back(list.OnGetItemText(row, 0));
        return ids;
    }
    Fate fate{.rows = 100'000};
    CADIListCtrl list{new StoredTable(fate)};
};

TEST_F(StoredList, CountsItsRowsReadsThemAsTheyAreSeenAndHasThemSorted) {
    list.SetNumRow(10, 0);
    list.ReadAllRows();
    EXPECT_TRUE(fate.isClosed && list.IsReadThrough() && list.GetNumRow() == 100'000);
    EXPECT_EQ(fate.asks, 0);
    test::Stage stage(list);
    list.EnsureVisible(99'999);
    stage.Click(99'999);
    EXPECT_EQ(list.OnGetItemText(99'999, 2), "row 99999");
    EXPECT_LT(fate.asks, 10);
    EXPECT_EQ(list.OnGetItemText(8, 1) + list.OnGetItemText(8, 3), "1");
    stage.ClickHeading(0);
    EXPECT_THAT(Ids(2), ElementsAre("99999", "99998"));
    EXPECT_EQ(stage.Selected(), "");
    stage.ClickHeading(1); // equal ones stand as they stood
    EXPECT_THAT(Ids(2), ElementsAre("99994", "99987"));
    EXPECT_EQ(list.OnGetItemText(1, 1), "6");
    for (int row = 0; row < 100'000; ++row) // in ever larger batches
        ASSERT_EQ(list.OnGetItemText(row, 2), "row " + list.OnGetItemText(row, 0));
    EXPECT_LT(fate.asks, 100);
}

TEST_F(StoredList, ASortSaysHowFarItHasComeAndIsStoppedByEscape) {
    test::Stage stage(list);
    list.ReadAllRows();
    int shown = -1;
    fate.duringStep = [&] {
        while (!RequestScope::Current()->IsStopped())
            if (auto const *const bar = list.viewport()->findChild<QProgressBar *>(); bar != nullptr && shown < 0) {
                shown = bar->value();
                QCoreApplication::postEvent(&list, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
            }
    };
    stage.ClickHeading(1);
    EXPECT_GT(shown, 400); // of 1000: a third of what follows the counting
    EXPECT_EQ(list.viewport()->findChild<QProgressBar *>(), nullptr);
    EXPECT_THAT(Ids(2), ElementsAre("0", "1"));
    EXPECT_FALSE(list.IsSorted() || list.GetHeaderCtrl()->isSortIndicatorShown());
}

TEST_F(StoredList, RowsThatCannotBeReadAreEmptyAndAreAskedForAgain) {
    list.ReadAllRows();
    fate.failsAt = 0;
    EXPECT_EQ(list.OnGetItemText(5, 2), "");
    int const asks = fate.asks;
    EXPECT_EQ(list.OnGetItemText(5, 2), "");
    EXPECT_EQ(fate.asks, asks);
    fate.failsAt = -1;
    EXPECT_TRUE(test::Eventually([&] { return list.OnGetItemText(5, 2) == "row 5"; }));
}

TEST_F(StoredList, EntriesThatAreAlteredCountInASort) {
    list.SetNumRow(5, 0);
    EXPECT_EQ(list.OnGetItemText(4, 2), "row 4"); // of those that are kept
    list.ReadAllRows();
    list.GetCacheItem(2, 0) = "99";
    EXPECT_STREQ(list.GetCacheItem(50'000, 1), "row 50000");
    list.GetCacheItem(50'000, 0) = "100";
    EXPECT_EQ(list.OnGetItemText(50'000, 1), "100");
    list.Sort(1, true);
    EXPECT_THAT(Ids(3), ElementsAre("50000", "2", "6"));
    EXPECT_EQ(list.OnGetItemText(0, 2) + list.OnGetItemText(2, 2), "row 50000row 6");
}

TEST_F(StoredList, AClassThatFiltersRowsHasThemKept) {
    struct Choosy : CADIListCtrl {
        using CADIListCtrl::CADIListCtrl;
        bool OnFilterRow(int row) override { return row != 90'000; }
        void OnValue(int, int, int) override { ++values; }
        int values = 0;
    };
    Choosy choosy(new StoredTable(fate));
    choosy.AddAllColumns();
    choosy.ReadAllRows();
    EXPECT_EQ(choosy.GetNumRow(), 99'999);
    EXPECT_EQ(choosy.values, 2 * 99'999);
    EXPECT_EQ(choosy.OnGetItemText(89'999, 2) + choosy.OnGetItemText(90'000, 2), "row 89999row 90001");
}

} // namespace
} // namespace zelvar
