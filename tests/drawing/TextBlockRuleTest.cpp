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
    for (auto const &[height, sign] :
         {std::pair{40, SignFont{20, 700}}, {31, {15, 700}}, {29, {14, 100}}, {0, {13, 100}}})
        EXPECT_EQ(SignFontFor(height, 700), sign) << height;
}

} // namespace
} // namespace zelvar
