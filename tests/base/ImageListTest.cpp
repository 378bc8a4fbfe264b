#include "zelvar/base/ImageList.h"

#include "support/Test.h"

#include <thread>

namespace zelvar {
namespace {

ImageDescription Icon(DString name) { return {.name = std::move(name)}; }

TEST(ImageList, EqualPicturesShareAnIndexAndTheOverlayTellsThemApart) {
    ImageList list;
    EXPECT_EQ(list.Add(Icon("folder")), 0);
    EXPECT_EQ(list.Add({.name = "folder", .linkOverlay = true}), 1);
    EXPECT_EQ(list.Add(Icon("folder")), 0);
    EXPECT_EQ(list.GetCount(), 2);
    EXPECT_TRUE(list.Get(1).linkOverlay);
    EXPECT_EQ(list.Get(2), ImageDescription{});
    EXPECT_EQ(list.Get(-1), ImageDescription{});
}

TEST(ImageList, ACopyKeepsIndexesUnderANumberOfItsOwn) {
    ImageList list;
    list.Add(Icon("a"));
    list.Add(Icon("b"));
    ImageList copy(list);
    EXPECT_NE(copy.Id(), list.Id());
    EXPECT_EQ(copy.Add(Icon("b")), 1);
    copy.Add(Icon("c"));
    EXPECT_EQ(list.GetCount(), 2);
}

TEST(ImageList, ThreadsThatAddTheSamePicturesAgreeOnTheirIndexes) {
    ImageList list;
    auto const add = [&list] {
        std::vector<int> indexes;
        indexes.reserve(500);
        for (int i = 0; i < 500; ++i)
            indexes.push_back(list.Add(Icon(std::to_string(i % 50))));
        return indexes;
    };
    std::vector<int> first;
    std::vector<int> second;
    std::thread one([&] { first = add(); });
    std::thread two([&] { second = add(); });
    one.join();
    two.join();
    EXPECT_EQ(first, second);
    EXPECT_EQ(list.GetCount(), 50);
}

} // namespace
} // namespace zelvar
