// What a listing says of its items, when it is to be made anew, where its rows go and in which order.
#include "support/Test.h"
#include "zelvar/model/listing/ListingOrder.h"
#include "zelvar/model/listing/ListingTexts.h"
#include "zelvar/model/listing/PaneState.h"
#include "zelvar/model/listing/RowPlan.h"

#include <random>

namespace zelvar {
namespace {

// The tests run in the locale C.UTF-8, which groups no digits.
TEST(ListingTexts, SizesAreInBytesBelowOneKilobyteAndCutTo32Bits) {
    EXPECT_EQ(FormatFileSize(1023), "1023 B");
    EXPECT_EQ(FormatFileSize(1024), "1 KB");
    EXPECT_EQ(FormatFileSize(2047), "1 KB");
    EXPECT_EQ(FormatFileSize(std::int64_t{2147483647} * 1024), "2147483647 KB");
    EXPECT_EQ(FormatFileSize(std::int64_t{2147483648} * 1024), "-2147483648 KB");
}

TEST(ListingTexts, TimesHaveNoSeconds) {
    SystemTime const time{.wYear = 2024, .wMonth = 2, .wDay = 9, .wHour = 7, .wMinute = 5, .wSecond = 59};
    EXPECT_EQ(FormatTime(time), "2024-02-09 07:05");
}

PaneState const kSaved{.bdiFilter = 2, .formatId = "GTiff", .fileFilter = "*.tif", .rootPaths = {"/a", "/b"}};

TEST(PaneState, TellsWhatChangesAListing) {
    EXPECT_FALSE(StateChanged(kSaved, kSaved, true));
    test::Rows<std::vector<DString>, bool> const cases = {{{"/b", "/a"}, false}, {{"/a", "/b"}, false},
                                                          {{"/a", "/c"}, true},  {{"/a", "/B"}, true},
                                                          {{"/a"}, true},        {{"/a", "/b", "/c"}, true}};
    for (auto const &[roots, changes] : cases) {
        PaneState wanted = kSaved;
        wanted.rootPaths = roots;
        EXPECT_EQ(StateChanged(kSaved, wanted, false), changes) << roots.back();
    }
    PaneState wanted = kSaved;
    wanted.bdiFilter = 0;
    EXPECT_TRUE(StateChanged(kSaved, wanted, false));
    wanted = kSaved;
    wanted.formatId = "gtiff";
    EXPECT_TRUE(StateChanged(kSaved, wanted, false));
    wanted = kSaved;
    wanted.fileFilter = "*.img";
    EXPECT_TRUE(StateChanged(kSaved, wanted, true));
    EXPECT_FALSE(StateChanged(kSaved, wanted, false)) << "a mask alone counts in a recursive list only";
}

TEST(PaneState, AWarmRunNeedsAllFormerRoots) {
    EXPECT_TRUE(CoversRoots({"/a"}, {"/b", "/a"}));
    EXPECT_FALSE(CoversRoots({"/a", "/b"}, {"/a"}));
    EXPECT_FALSE(CoversRoots({}, {"/a"}));
    EXPECT_FALSE(CoversRoots({"/a"}, {}));
}

using Batch = std::vector<PendingRow<std::string>>;

std::vector<std::int32_t> RowsOf(Batch const &batch) {
    std::vector<std::int32_t> rows;
    for (auto const &record : batch)
        rows.push_back(record.row);
    return rows;
}

/// What the plan must give, done one insertion after the other.
std::vector<std::string> InsertedOneByOne(std::vector<std::string> rows, Batch const &batch) {
    for (auto const &record : batch) {
        bool const atEnd = record.row < 0 || static_cast<std::size_t>(record.row) > rows.size();
        rows.insert(atEnd ? rows.end() : rows.begin() + record.row, record.item);
    }
    return rows;
}

std::vector<std::string> Planned(std::vector<std::string> rows, Batch const &batch) {
    RowPlan const plan(rows.size(), RowsOf(batch));
    plan.Apply(rows, batch);
    return rows;
}

TEST(RowPlan, GivesTheResultOfSingleInsertions) {
    std::mt19937 random(7); // rows before the first and behind the last as well
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> rows(random() % 150);
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i] = "old" + std::to_string(i);
        Batch batch(random() % 150);
        for (std::size_t i = 0; i < batch.size(); ++i)
            batch[i] = {static_cast<std::int32_t>(random() % (rows.size() + i + 4)) - 1, std::to_string(i)};
        std::vector<std::string> const expected = InsertedOneByOne(rows, batch);
        ASSERT_EQ(Planned(rows, batch), expected) << round;

        RowPlan const plan(rows.size(), RowsOf(batch));
        std::vector<std::uint32_t> selected;
        for (std::uint32_t row = 0; row < rows.size(); row += 3)
            selected.push_back(row);
        std::vector<std::uint32_t> const moved = plan.MoveOldRows(selected);
        ASSERT_EQ(moved.size(), selected.size());
        for (std::size_t i = 0; i < selected.size(); ++i)
            ASSERT_EQ(expected[moved[i]], rows[selected[i]]) << round;
        for (std::size_t i = 0; i < batch.size(); ++i)
            ASSERT_EQ(expected[plan.InsertedRows()[i]], batch[i].item) << round;
    }
}

TEST(RowPlan, ARowThatIsNoneIsNotMoved) {
    RowPlan const plan(2, {0});
    EXPECT_THAT(plan.MoveOldRows({1, 2}), ElementsAre(2));
}

ListingFacts File(DString name, std::int64_t size = 0, SystemTime time = {}) {
    return {.name = std::move(name), .isFileSystem = true, .size = size, .hasTime = time.wYear != 0, .time = time};
}

ListingFacts Node(DString name) { return {.name = std::move(name)}; }

/// The names in rows, `batch` items placed at a time.
std::vector<DString> Listed(std::vector<ListingFacts> const &items, ListingSort sort, bool ascending = true,
                            std::size_t batch = 1000) {
    ListingOrder order;
    order.Reset(sort, ascending);
    std::vector<DString> rows;
    auto const place = [&] {
        std::vector<PlacedItem> placed;
        order.Place(placed);
        for (PlacedItem const &item : placed) {
            ASSERT_LE(static_cast<std::size_t>(item.row), rows.size());
            rows.insert(rows.begin() + item.row, items[item.item].name);
        }
    };
    for (ListingFacts const &item : items) {
        order.Add(item);
        if (order.WaitingCount() == batch)
            place();
    }
    place();
    return rows;
}

TEST(ListingOrder, ByNameComesTheStemInNaturalOrderThenTheExtension) {
    std::vector<ListingFacts> const items{File("img10.tif"), File("a.tif"), File("IMG9.tif"), File("a"), File("a.img")};
    EXPECT_THAT(Listed(items, ListingSort::Name), ElementsAre("a", "a.img", "a.tif", "IMG9.tif", "img10.tif"));
    EXPECT_THAT(Listed(items, ListingSort::Name, false), ElementsAre("img10.tif", "IMG9.tif", "a.tif", "a.img", "a"));
}

TEST(ListingOrder, BySizeItemsOutsideTheFileSystemComeFirstAsTheyArrived) {
    std::vector<ListingFacts> const items{File("big", 900), Node("z"), File("small", 5), Node("a"), File("folder", -1)};
    EXPECT_THAT(Listed(items, ListingSort::Size), ElementsAre("z", "a", "folder", "small", "big"));
}

TEST(ListingOrder, ByDateTheSecondsTakeNoPart) {
    SystemTime const early{.wYear = 2024, .wMonth = 5, .wDay = 1, .wHour = 10, .wMinute = 0, .wSecond = 59};
    SystemTime sameMinute = early;
    sameMinute.wSecond = 1;
    SystemTime laterMilliseconds = early;
    laterMilliseconds.wSecond = 0;
    laterMilliseconds.wMilliseconds = 1;
    SystemTime nextMonth{.wYear = 2024, .wMonth = 6, .wDay = 1};
    std::vector<ListingFacts> const items{File("month", 0, nextMonth),
                                          File("milliseconds", 0, laterMilliseconds),
                                          File("first", 0, early),
                                          File("second", 0, sameMinute),
                                          File("none"),
                                          Node("node")};
    EXPECT_THAT(Listed(items, ListingSort::Date),
                ElementsAre("node", "none", "first", "second", "milliseconds", "month"));
}

TEST(ListingOrder, EqualItemsKeepArrivalOrderAndDescendingReversesThemUnlessThereIsNoKey) {
    std::vector<ListingFacts> const items{File("b", 7), File("a", 7), File("c", 7)};
    for (std::size_t const batch : {1U, 10U}) {
        EXPECT_THAT(Listed(items, ListingSort::Size, true, batch), ElementsAre("b", "a", "c"));
        EXPECT_THAT(Listed(items, ListingSort::Size, false, batch), ElementsAre("c", "a", "b"));
        for (bool const ascending : {true, false})
            EXPECT_THAT(Listed(items, ListingSort::None, ascending, batch), ElementsAre("b", "a", "c"));
    }
}

TEST(ListingOrder, BatchesOfAnySizeGiveTheSameRows) {
    std::mt19937 random(3);
    std::vector<ListingFacts> items;
    for (int i = 0; i < 700; ++i)
        items.push_back(File("scene " + std::to_string(random() % 90) + (random() % 2 == 0 ? ".tif" : ".IMG"),
                             static_cast<std::int64_t>(random() % 40)));
    for (ListingSort const sort : {ListingSort::Name, ListingSort::Size})
        for (bool const ascending : {true, false}) {
            std::vector<DString> const expected = Listed(items, sort, ascending);
            for (std::size_t const batch : {1U, 2U, 7U, 64U, 300U})
                EXPECT_EQ(Listed(items, sort, ascending, batch), expected) << batch;
        }
}

} // namespace
} // namespace zelvar
