#include "support/Test.h"
#include "zelvar/data/reader/AnswerReading.h"

namespace zelvar {
namespace {

wire::RowsReadT Told(int count, DString texts, std::vector<std::uint32_t> ends) {
    wire::RowsReadT told;
    told.count = count;
    told.texts = std::move(texts);
    told.ends = std::move(ends);
    return told;
}

TEST(TableAnswers, RowsAreTakenOnlyIfTheirFiguresCanBe) {
    constexpr int least = std::numeric_limits<int>::min();
    test::Rows<char const *, wire::RowsReadT, bool> const cases = {
        {"whole", Told(2, "abcd", {1, 2, 2, 4}), true},
        {"none", Told(0, "", {}), true},
        {"a cell too few", Told(2, "abc", {1, 2, 3}), false},
        {"a row too many", Told(4, "", {0, 0, 0, 0, 0, 0, 0, 0}), false},
        {"negative", Told(-1, "", {}), false},
        {"very negative", Told(least, "", {}), false},
        {"backwards", Told(1, "ab", {2, 1}), false},
        {"behind the text", Told(1, "ab", {1, 3}), false},
        {"text left over", Told(1, "ab", {1, 1}), false}};
    for (auto const &[name, told, taken] : cases) {
        ADIRows rows;
        rows.count = 77;
        EXPECT_EQ(TakeRows(wire::RowsReadT(told), 2, 3, rows), taken) << name;
        EXPECT_EQ(rows.count == 77, !taken) << name;
    }
    ADIRows rows;
    ASSERT_TRUE(TakeRows(Told(0, "", {}), 2, 3, rows));
    EXPECT_TRUE(rows.isEnd); // so that nobody asks for ever
}

TEST(TableAnswers, AnOrderHasEachRowOnce) {
    using Numbers = std::vector<std::uint32_t>;
    for (auto const &[from, isOne] :
         test::Rows<Numbers, bool>{{Numbers(), true}, {{1, 0, 2}, true}, {{0, 0, 2}, false}, {{0, 3, 1}, false}}) {
        Numbers rows;
        EXPECT_EQ(TakeOrder(from, rows), isOne) << testing::PrintToString(from);
        EXPECT_EQ(rows == from, isOne);
    }
}

TEST(TableAnswers, ColumnsGetNamesThatAreTextAndTypesThatAreKnown) {
    wire::TableOpenedT opened;
    for (int const type : {1, 2, 3, 0, -5, 99}) {
        opened.columns.push_back(std::make_unique<wire::TableColumnT>());
        opened.columns.back()->name = "\xFF";
        opened.columns.back()->type = type;
        opened.columns.push_back(nullptr);
    }
    std::vector<ADIColumn> const columns = ColumnsFrom(std::move(opened));
    ASSERT_EQ(columns.size(), 6U);
    EXPECT_EQ(columns[0].type, ADICol_Int);
    EXPECT_EQ(columns[1].type, ADICol_Double);
    for (std::size_t i = 2; i < 6; ++i)
        EXPECT_EQ(columns[i].type, ADICol_String);
    EXPECT_EQ(columns[5].name, "\xEF\xBF\xBD");
}

TEST(TableAnswers, AChannelIsTakenOnlyIfItsFiguresCanBe) {
    wire::ChannelT told;
    told.sizeX = told.sizeY = told.slices = told.timeFrames = 3;
    told.dataType = RDI_UInt16;
    EXPECT_EQ(ChannelFrom(&told).sizeX, 3);
    EXPECT_EQ(ChannelFrom(nullptr).sizeX, 0);
    for (auto const figure :
         {&wire::ChannelT::sizeX, &wire::ChannelT::sizeY, &wire::ChannelT::slices, &wire::ChannelT::timeFrames})
        for (int const value : {0, -1}) {
            wire::ChannelT odd = told;
            odd.*figure = value;
            EXPECT_EQ(ChannelFrom(&odd).dataType == RDI_UInt16, value == 0);
        }
    told.dataType = 77;
    EXPECT_EQ(ChannelFrom(&told).sizeX, 0);
}

} // namespace
} // namespace zelvar
