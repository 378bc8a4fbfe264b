#include "zelvar/lists/core/FlexColumns.h"

#include "support/Test.h"
#include "zelvar/lists/core/CellNumber.h"
#include "zelvar/lists/core/LastSort.h"

namespace zelvar {
namespace {

TEST(FlexColumns, GrowMoveAndGo) {
    FlexColumns columns;
    auto const types = [&] {
        std::vector<ADIColType> found;
        for (int col = 0; col < columns.Size(); ++col)
            found.push_back(columns.Type(col));
        return found;
    };
    columns.Set(2, {true, ADICol_Int});
    columns.Set(-1, {true, ADICol_Int});
    columns.Grow(-5);
    EXPECT_THAT(types(), ElementsAre(ADICol_None, ADICol_None, ADICol_Int)); // those between have none
    EXPECT_TRUE(columns.Type(3) == ADICol_String && columns.Type(-1) == ADICol_String) << "those beyond are text";
    columns.Set(1, {false, ADICol_Double});
    columns.Move(0, 2);
    EXPECT_THAT(types(), ElementsAre(ADICol_Double, ADICol_Int, ADICol_None));
    columns.Move(3, 0); // from outside
    columns.Move(2, -1);
    EXPECT_THAT(types(), ElementsAre(ADICol_None, ADICol_Double, ADICol_Int));
    columns.Remove(1);
    columns.Remove(9);
    EXPECT_THAT(types(), ElementsAre(ADICol_None, ADICol_Int));
}

TEST(FlexColumns, WithoutAnEditableOneNoRowIsWalked) {
    FlexColumns columns;
    columns.Set(1, {true, ADICol_String});
    for (auto [cols, found, item, subItem] : test::Rows<int, bool, int, int>{{3, true, 7, 2}, {1, false, 7, 0}}) {
        EXPECT_EQ(FindEditableCell(columns, 2'000'000'000, cols, item, subItem), found);
        EXPECT_EQ(std::pair(item, subItem), found ? std::pair(8, 1) : std::pair(2'000'000'000, 0));
    }
}

TEST(LastSort, TheSameColumnTurnsRoundAndAnotherBeginsAscending) {
    EXPECT_TRUE(LastSort().IsSortAscnd(0) && LastSort().IsSortedAscnd() && !LastSort().IsSortAscnd(-2));
    EXPECT_TRUE(!LastSort(3, true).IsSortAscnd(3) && LastSort(3, true).IsSortAscnd(4));
    EXPECT_TRUE(LastSort(3, false).IsSortAscnd(3));
}

TEST(CellNumber, ATextMayBeginWithANumber) {
    double const infinity = std::numeric_limits<double>::infinity();
    std::tuple<char const *, std::optional<double>> const cases[] = {
        {"12", 12.0},    {"  -3.5 m", -3.5},   {"+7", 7.0},  {"1e3", 1000.0},   {".5", 0.5},
        {"0x1F", 31.0},  {"0xz", 0.0},         {"1,5", 1.0}, {"inf", infinity}, {"abc", {}},
        {"", {}},        {"   ", {}},          {"--1", {}},  {"+-1", {}},       {"1e999", infinity},
        {"1e-999", 0.0}, {"-1e999", -infinity}};
    for (auto const &[text, value] : cases)
        EXPECT_EQ(ParseCellNumber(text), value) << text;
    EXPECT_TRUE(std::isnan(ParseCellNumber("nan").value_or(0)));
}

} // namespace
} // namespace zelvar
