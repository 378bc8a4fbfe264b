#include "zelvar/model/listing/ListingOrder.h"

#include "support/Test.h"
#include "zelvar/model/listing/RowPlan.h"

#include <random>

namespace zelvar {
namespace {

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
