#include "zelvar/base/Containers.h"

#include "support/Test.h"
#include "zelvar/base/DString.h"
#include "zelvar/base/RefItem.h"

namespace zelvar {
namespace {

TEST(DVectorSafe, AnIndexOutsideReadsAnEmptyElementAndKeepsNothingWrittenThere) {
    DVectorSafe<DString> texts{"a"};
    texts[1] = "lost";
    EXPECT_EQ(texts[7], "");
    texts[static_cast<std::size_t>(-1)] += "lost too";
    DVectorSafe<DString> const &constant = texts;
    EXPECT_EQ(constant[1], "");
    EXPECT_EQ(constant[0], "a");
    EXPECT_EQ(texts.size(), 1U);
    texts.erase(texts.begin());
    EXPECT_EQ(texts[0], "");
}

TEST(DMap, WhatIsMissingIsNullOrDefaultAndIsNotMade) {
    DMap<DString, int> map;
    EXPECT_EQ(map.Find("a"), nullptr);
    EXPECT_EQ(map.Get("a"), 0);
    EXPECT_TRUE(map.IsEmpty());
    map.Set("a", 1);
    map.Set("a", 2);
    EXPECT_EQ(map.Size(), 1U);
    EXPECT_EQ(*map.Find("a"), 2);
    EXPECT_TRUE(map.Rmv("a"));
    EXPECT_FALSE(map.Rmv("a"));
}

class Counted : public RefItem {
public:
    explicit Counted(int &living) : m_living(living) { ++m_living; }
    ~Counted() override { --m_living; }
    Counted(Counted const &) = delete;
    Counted &operator=(Counted const &) = delete;

private:
    int &m_living;
};

TEST(RefItemPtr, TheLastOwnerDeletesWhateverWayItGoes) {
    int living = 0;
    {
        RefItemPtr<Counted> first(new Counted(living));
        RefItemPtr<RefItem> const second(first);
        RefItemPtr<Counted> &same = first;
        first = same;
        EXPECT_EQ(living, 1);
        RefItemPtr<Counted> const third(std::move(first));
        EXPECT_EQ(living, 1);
        first = RefItemPtr<Counted>(new Counted(living));
        EXPECT_EQ(living, 2);
        first = nullptr;
        EXPECT_EQ(living, 1);
        EXPECT_EQ(second.get(), third.get());
    }
    EXPECT_EQ(living, 0);
}

} // namespace
} // namespace zelvar
