#include "zelvar/filedlg/core/FilterBuffer.h"

#include "support/Test.h"

namespace zelvar::test {
namespace {

TEST(FilterBuffer, HoldsTheFormatsInTheirOrder) {
    FilterBuffer buffer;
    buffer.InitFilter();
    EXPECT_TRUE(buffer.Add(DFileFrmt("", "All Files", "*.*")));
    EXPECT_TRUE(buffer.Add(DFileFrmt(nullptr, "A|B", "*.a;*.b")));
    buffer.FinishFilter();
    EXPECT_STREQ(buffer.Text(), "All Files|*.*|A B|*.a;*.b||");
    buffer.InitFilter();
    buffer.FinishFilter();
    EXPECT_STREQ(buffer.Text(), "|");
}

TEST(FilterBuffer, IsFullAtItsSizeAndTakesNothingInPart) {
    // "name|*.x|" and the two bytes at the end
    std::size_t const room = FilterBuffer::kSize - DString("|*.x|").size() - 2;
    for (std::size_t const more : {0U, 1U}) {
        FilterBuffer buffer;
        buffer.InitFilter();
        EXPECT_EQ(buffer.Add(DFileFrmt("", DString(room + more, 'n').c_str(), "*.x")), more == 0);
        EXPECT_FALSE(buffer.Add(DFileFrmt("", "z", "*.z"))) << "its place in the list would be another's";
        buffer.FinishFilter();
        EXPECT_EQ(std::strlen(buffer.Text()), more == 0 ? FilterBuffer::kSize - 1 : 1);
        buffer.InitFilter();
        EXPECT_TRUE(buffer.Add(DFileFrmt("", "z", "*.z")));
    }
}

TEST(FilterBuffer, TheEntryOfAnExtensionIsTheFirstWhosePatternHoldsIt) {
    char const *const three = "Text|*.txt|Tables|*.csv;*.tsv|All|*.*||";
    Rows<char const *, char const *, int> const cases = {
        {"", "", 0},       {three, "*.txt", 0}, {"Text|*.txt||", "", 0},
        {"Text", "", 1},   {three, "*.tsv", 1}, {"None||Text|*.txt||", "", 1},
        {three, "csv", 1}, {three, "*.gif", 3}, {"Text (*.csv)|*.txt|Tables|*.csv||", "*.csv", 1}};
    for (auto const &[filter, extension, index] : cases)
        EXPECT_EQ(IndexOfPattern(filter, extension), index) << filter << " " << extension;
}

} // namespace
} // namespace zelvar::test
