#include "zelvar/drawing/core/TextBlockRule.h"

#include "support/Test.h"

namespace zelvar {
namespace {

using Hits = std::vector<ProductNameHit>;

TEST(TextBlockRule, FindsEachOccurrenceWithItsLine) {
    EXPECT_EQ(FindProductName("no name here"), Hits{});
    EXPECT_EQ(FindProductName(""), Hits{});
    EXPECT_EQ(FindProductName("Morvane222"), (Hits{{.line = 0, .lineBegin = 0, .end = 10}}));
    EXPECT_EQ(FindProductName("a\n\nMorvane222 b"), (Hits{{.line = 2, .lineBegin = 3, .end = 13}}));
    EXPECT_EQ(FindProductName("Morvane222\nand Morvane222"),
              (Hits{{.line = 0, .lineBegin = 0, .end = 10}, {.line = 1, .lineBegin = 11, .end = 25}}));
    EXPECT_EQ(FindProductName(DString(100, 'x') + "Morvane222").size(), 1U); // met ten times, listed once
    EXPECT_EQ(FindProductName("morvane222 Morvane22"), Hits{});
}

TEST(TextBlockRule, ASmallSignIsThinAndReadable) {
    EXPECT_EQ(SignFontFor(40, 700), (SignFont{20, 700}));
    EXPECT_EQ(SignFontFor(31, 700), (SignFont{15, 700}));
    EXPECT_EQ(SignFontFor(29, 700), (SignFont{14, 100}));
    EXPECT_EQ(SignFontFor(26, 700), (SignFont{13, 100}));
    EXPECT_EQ(SignFontFor(20, 700), (SignFont{13, 100}));
    EXPECT_EQ(SignFontFor(0, 700), (SignFont{13, 100}));
}

} // namespace
} // namespace zelvar
