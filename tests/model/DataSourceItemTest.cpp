#include "zelvar/model/DataSourceItem.h"

#include "support/Test.h"

namespace zelvar {
namespace {

/// The least that an item can be; it counts how many live.
class PlainItem : public DataSourceItemBase {
public:
    explicit PlainItem(int &living) : m_living(living) { ++m_living; }
    PlainItem(PlainItem const &) = delete;
    PlainItem &operator=(PlainItem const &) = delete;
    ~PlainItem() override { --m_living; }
    void SetName(DString const &) override {}
    [[nodiscard]] DString GetName() const override { return "plain"; }
    [[nodiscard]] DString GetPath() const override { return {}; }
    DataSourceItemItr *CreateIterator(ICancel *, char const *, char const *, int, DLGTemplate) override {
        return nullptr;
    }
    void DeleteIterator(DataSourceItemItr *itr) override { delete itr; }
    RefItemPtr<DataSourceItem> Clone() override { return nullptr; }
    [[nodiscard]] bool IsFolder() const override { return false; }
    [[nodiscard]] DataSourceType GetDataSourceType() const override { return DST_UNKNOWN; }

private:
    int &m_living;
};

struct PlainIterator : DataSourceItemItr {
    void Fill(std::vector<RefItemPtr<DataSourceItem>> items) {
        m_items = std::move(items);
        CreateCursor();
    }
};

TEST(DataSourceItem, AnItemDiesOnceWithItsLastHolderAndTakesItsAncestorsAlong) {
    int living = 0;
    RefItemPtr<PlainItem> const kept(new PlainItem(living));
    {
        RefItemPtr<PlainItem> const parent(new PlainItem(living));
        parent->SetParent(kept);
        RefItemPtr<PlainItem> child(new PlainItem(living));
        child->SetParent(parent);
        EXPECT_EQ(living, 3);
        EXPECT_EQ(child->GetParent(), RefItemPtr<DataSourceItem>(parent));
    }
    EXPECT_EQ(living, 1);
    EXPECT_EQ(kept->RefCount(), 1);
}

TEST(DataSourceItemItr, StandsOnNoChildBeforeFirst) {
    int living = 0;
    PlainIterator unfilled;
    unfilled.First();
    EXPECT_FALSE(unfilled.IsValid());
    PlainIterator empty;
    empty.Fill({});
    empty.First();
    EXPECT_FALSE(empty.IsValid());
    PlainIterator two;
    two.Fill({new PlainItem(living), new PlainItem(living)});
    EXPECT_FALSE(two.IsValid());
    int seen = 0;
    for (two.First(); two.IsValid(); two.Next())
        seen += two.GetItem()->GetName() == "plain" ? 1 : 0;
    EXPECT_EQ(seen, 2);
    two.First();
    EXPECT_TRUE(two.IsValid());
}

} // namespace
} // namespace zelvar
