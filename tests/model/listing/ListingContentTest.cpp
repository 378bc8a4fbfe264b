#include "zelvar/model/listing/ListingContent.h"

#include "support/Test.h"

#include <thread>

namespace zelvar {
namespace {

struct NameTraits {
    static ListingFacts Facts(DString const &item, ListingSort) { return {.name = item, .isFileSystem = true}; }
    static DString Path(DString const &item) { return "/data/" + item; }
};
using Content = ListingContent<DString, NameTraits>;

void Merge(Content &content, std::vector<DString> &rows) {
    std::vector<PendingRow<DString>> batch = content.TakePending();
    std::vector<std::int32_t> at;
    for (auto const &record : batch)
        at.push_back(record.row);
    RowPlan(rows.size(), at).Apply(rows, std::move(batch));
}

void AddAll(Content &content, std::vector<DString> const &items) {
    for (DString const &item : items)
        content.Add(item);
    content.Publish();
}

TEST(ListingContent, BatchesThatWaitTogetherMergeInOrder) {
    Content content;
    std::vector<DString> rows{".."};
    content.BeginCold(ListingSort::Name, true);
    AddAll(content, {"c", "a"});
    AddAll(content, {"b", "d"});
    Merge(content, rows);
    EXPECT_THAT(rows, ElementsAre("a", "b", "c", "d", "..")); // the rows of a listing begin in front of all others
    EXPECT_THAT(content.TakePending(), IsEmpty());
}

TEST(ListingContent, AWarmRunKeepsItemsAndTakesOnlyNewOnes) {
    for (bool const ascending : {true, false}) {
        Content content;
        std::vector<DString> rows;
        content.BeginCold(ListingSort::None, true);
        AddAll(content, {"b.tif", "a.txt", "c.tif"});
        content.ClearPending();
        content.BeginWarm(ListingSort::Name, ascending, [](DString const &item) { return item.ends_with(".tif"); });
        EXPECT_FALSE(content.Add("b.tif"));
        EXPECT_TRUE(content.Add("a.tif"));
        content.Publish();
        Merge(content, rows);
        if (ascending)
            EXPECT_THAT(rows, ElementsAre("a.tif", "b.tif", "c.tif"));
        else
            EXPECT_THAT(rows, ElementsAre("c.tif", "b.tif", "a.tif"));
        EXPECT_EQ(content.Count(), 3U);
    }
}

TEST(ListingContent, AWarmRunKeepsWhatAStoppedRunHadNotPublished) {
    Content content;
    content.BeginCold(ListingSort::Name, true);
    content.Add("b");
    content.Add("a");
    content.BeginWarm(ListingSort::Name, true, [](DString const &) { return true; });
    std::vector<DString> rows;
    Merge(content, rows);
    EXPECT_THAT(rows, ElementsAre("a", "b"));
}

TEST(ListingContent, AColdRunDoesNotLookForDuplicates) {
    Content content;
    content.BeginCold(ListingSort::Name, true);
    EXPECT_TRUE(content.Add("a"));
    EXPECT_TRUE(content.Add("a"));
}

TEST(ListingContent, AWorkerAndAListMayUseItAtOnce) {
    constexpr int kItems = 20'000;
    Content content;
    content.BeginCold(ListingSort::Name, true);
    std::atomic<bool> done{false};
    std::thread worker([&] {
        for (int i = 0; i < kItems; ++i) {
            content.Add(std::to_string(i * 7919 % kItems));
            if (content.IsPublishDue())
                content.Publish();
        }
        content.Publish();
        done = true;
    });
    std::vector<DString> rows;
    while (!done)
        Merge(content, rows);
    worker.join();
    Merge(content, rows);
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(kItems));
    for (int i = 0; i < kItems; ++i)
        ASSERT_EQ(rows[static_cast<std::size_t>(i)], std::to_string(i));
}

} // namespace
} // namespace zelvar
