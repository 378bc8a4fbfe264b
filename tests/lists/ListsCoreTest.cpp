#include "support/Test.h"
#include "zelvar/base/CellNumber.h"
#include "zelvar/lists/core/CellCache.h"
#include "zelvar/lists/core/CellOrder.h"
#include "zelvar/lists/core/FlexColumns.h"

#include <numeric>
#include <random>

#include <strings.h>

namespace zelvar {
namespace {

using Texts = std::vector<std::string>;
constexpr double kInfinite = std::numeric_limits<double>::infinity();

CellCache Filled(Texts const &column) {
    CellCache cache;
    cache.SetStride(1);
    for (std::string const &text : column) {
        cache.AddRow();
        cache.AddCell(text);
    }
    return cache;
}

Texts Sorted(Texts const &column, bool ascending = true) {
    CellCache cache = Filled(column);
    EXPECT_TRUE(cache.Sort(0, ascending, {}));
    Texts sorted;
    for (int position = 0; position < cache.Rows(); ++position)
        sorted.emplace_back(cache.Cell(cache.IdAt(position), 0));
    return sorted;
}

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
    constexpr int rows = 2'000'000'000;
    for (auto const &[editable, cols, expected] :
         test::Rows<int, int, std::pair<int, int>>{{1, 3, {8, 1}}, {0, 1, {8, 0}}, {1, 1, {rows, 2}}}) {
        FlexColumns columns;
        columns.Set(editable, {true, ADICol_String});
        std::pair cell{7, 2};
        EXPECT_EQ(FindEditableCell(columns, rows, cols, cell.first, cell.second), expected.first < rows);
        EXPECT_EQ(cell, expected);
    }
}

TEST(CellNumber, ATextMayBeginWithANumber) {
    std::tuple<char const *, std::optional<double>> const cases[] = {
        {"12", 12.0},    {"  -3.5 m", -3.5},    {"+7", 7.0},  {"1e3", 1000.0},    {".5", 0.5},
        {"0x1F", 31.0},  {"0xz", 0.0},          {"1,5", 1.0}, {"inf", kInfinite}, {"abc", {}},
        {"", {}},        {"   ", {}},           {"--1", {}},  {"+-1", {}},        {"1e999", kInfinite},
        {"1e-999", 0.0}, {"-1e999", -kInfinite}};
    for (auto const &[text, value] : cases)
        EXPECT_EQ(ParseCellNumber(text), value) << text;
    EXPECT_TRUE(std::isnan(ParseCellNumber("nan").value_or(0)));
}

TEST(CellOrder, ANumberIsWhatATextBeginsWithAndAWordIsNone) {
    test::Rows<double, std::vector<char const *>> const cases = {
        {0, {"", "abc", "nan", "-nan", "NaN(1)", "Nantes", "Information", "infinite", "-1e-999", "- 5"}},
        {kInfinite, {" inf ", "1e999", ".1e999"}},
        {-kInfinite, {"-Infinity"}}};
    for (auto const &[number, texts] : cases)
        for (char const *const text : texts)
            EXPECT_EQ(SortNumberOf(text), number) << text;
}

/// The rule for two cells, by its definition.
int Defined(std::string const &a, std::string const &b) {
    double const first = std::strtod(a.c_str(), nullptr);
    double const second = std::strtod(b.c_str(), nullptr);
    if (first == 0 && second == 0)
        return strcasecmp(a.c_str(), b.c_str());
    return first < second ? 1 : first > second ? -1 : 0;
}

TEST(CellOrder, PutsLargeNumbersFirstAndIsTheDefinedOneForEveryMixture) {
    EXPECT_EQ(Sorted({"-1", "abc", "10", "5", "0", "ABB"}), (Texts{"10", "5", "0", "ABB", "abc", "-1"}));
    EXPECT_EQ(Sorted({"-1", "abc", "10", "5", "0", "ABB"}, false), (Texts{"-1", "abc", "ABB", "0", "5", "10"}));
    Texts const some = {"",    "0",   "-0",  "abc", "ABC", "abcdefgh", "ABCDEFGHI", "abcdefghi", "5",
                        "5.0", "-5",  "x5",  "1e3", "999", "12a",      "-0.1",      "\xC3\xA4",  "b \xC3\x84",
                        " ",   "  3", "b z", "a_",  "aB",  "AA",       "_a",        "1e-320",    "0x10"};
    std::mt19937 random(7);
    for (int run = 0; run < 50; ++run) {
        Texts column;
        for (int i = 0; i < 200; ++i)
            column.push_back(some[random() % some.size()]);
        for (bool const ascending : {true, false}) {
            Texts expected = column;
            std::stable_sort(expected.begin(), expected.end(), [ascending](auto const &a, auto const &b) {
                return (ascending ? Defined(a, b) : Defined(b, a)) < 0;
            });
            ASSERT_EQ(Sorted(column, ascending), expected);
        }
    }
}

TEST(CellOrder, AStoppedSortLeavesTheOrder) {
    for (char const *const prefix : {"", "w"}) { // numbers and words are sorted each in their own way
        Texts column;
        for (int i = 0; i < 20'000; ++i)
            column.push_back(prefix + std::to_string(i % 777));
        CellCache cache = Filled(column);
        int most = 0; // questions, at each of which it is stopped then
        EXPECT_TRUE(cache.Sort(0, true, [&] { return ++most < 0; }));
        EXPECT_GT(most, 3);
        EXPECT_TRUE(cache.Sort(-1, false, {}));
        for (int stopAt = 1; stopAt <= most; ++stopAt) {
            int asked = 0;
            EXPECT_FALSE(cache.Sort(0, true, [&] { return ++asked == stopAt; }));
            for (int id = 0; id < cache.Rows(); ++id)
                ASSERT_EQ(cache.IdAt(id), id);
        }
    }
}

TEST(CellCache, TakesAnOrderInWhichEqualRowsStandAsTheyStood) {
    CellCache cache;
    for (int row = 0; row < 70; ++row)
        cache.AddRow(); // their cells are elsewhere
    EXPECT_TRUE(cache.FullRows() == 70 && cache.Sort(-1, true, {}));
    EXPECT_EQ(cache.IdAt(0), 69);
    std::vector<std::uint32_t> ids(70);
    std::iota(ids.begin(), ids.end(), 0U);
    std::swap(ids[0], ids[1]); // 1, 0, 2, ..., all but the first two and the last equal
    std::vector<std::uint64_t> const ties = {~std::uint64_t{7}, 0x1F};
    EXPECT_TRUE(cache.TakeOrder(ids, ties, {}));
    for (auto const &[place, id] : test::Rows<int, int>{{0, 1}, {1, 0}, {2, 68}, {68, 2}, {69, 69}})
        EXPECT_EQ(cache.IdAt(place), id) << place;
}

TEST(CellCache, TextsOfAnySizeStayWhereTheyAre) {
    Texts column;
    for (std::size_t row = 0; row < 3000; ++row)
        column.emplace_back(row % 300 == 0 ? 1'000'000 : row * row % 5000, static_cast<char>('a' + row % 20));
    CellCache cache = Filled(column);
    for (int row = 0; row < cache.Rows(); ++row)
        ASSERT_EQ(cache.Cell(row, 0), column[static_cast<std::size_t>(row)]);
}

TEST(CellCache, EqualCellsShareTheirTextAndNothingIsLostBehindANul) {
    using std::string_view_literals::operator""sv;
    CellCache cache = Filled({"same", "same", "sam", "a", {"a\0b", 3}, {"a\0b", 3}, "", ""});
    EXPECT_EQ(cache.Cell(0, 0), cache.Cell(1, 0)); // one text
    EXPECT_EQ(cache.Cell(2, 0), "sam"sv);
    EXPECT_TRUE(cache.Cell(4, 0) == "a\uFFFDb"sv && cache.Cell(5, 0) == "a\uFFFDb"sv);
    EXPECT_EQ(cache.Cell(6, 0), cache.Cell(7, 0));
    cache.AddRow();
    cache.DropRow();
    EXPECT_EQ(cache.Rows(), 8);
    for (auto const &[id, col] : {std::pair{-1, 0}, {8, 0}, {0, 1}, {0, -1}}) {
        cache.Cell(id, col) = "lost";
        EXPECT_EQ(cache.Cell(id, col), ""sv);
    }
    cache.Cell(0, 0) = nullptr; // as somebody might
    EXPECT_TRUE(cache.Sort(0, true, {}));
    EXPECT_EQ(cache.IdAt(0), 0);
    EXPECT_EQ(cache.IdAt(8), -1);
}

} // namespace
} // namespace zelvar
