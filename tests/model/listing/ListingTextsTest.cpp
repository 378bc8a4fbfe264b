#include "zelvar/model/listing/ListingTexts.h"

#include "support/Test.h"

namespace zelvar {
namespace {

// The tests run in the locale C.UTF-8, which groups no digits.
TEST(ListingTexts, SizesAreInBytesBelowOneKilobyteAndCutTo32Bits) {
    EXPECT_EQ(FormatFileSize(0), "0 B");
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

} // namespace
} // namespace zelvar
