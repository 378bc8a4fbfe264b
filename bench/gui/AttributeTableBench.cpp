// The list of a table's rows: sorting beside the standard library's sort, and memory.
#include "Harness.h"
#include "zelvar/data/IAttrData.h"
#include "zelvar/lists/CADIListCtrl.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <random>

#include <strings.h>

namespace zelvar::bench {
namespace {

constexpr int kRows = 1'000'000;
constexpr int kColumns = 4; // a number, a text, one that is empty for most rows, one that repeats itself

struct Table {
    std::vector<std::string> numbers;
    std::vector<std::string> texts;
};

Table const &Data() {
    static Table const table = [] {
        Table made;
        std::mt19937 random(1);
        for (int row = 0; row < kRows; ++row) {
            made.numbers.push_back(std::to_string(random() % 10'000'000) + "." + std::to_string(random() % 1000));
            std::string text = "Sample " + std::to_string(random() % kRows);
            text[0] = random() % 2 == 0 ? 's' : 'S';
            made.texts.push_back(std::move(text));
        }
        return made;
    }();
    return table;
}

std::string const &CellAt(int row, int col) {
    static std::string const empty;
    static std::string const rare = "a remark";
    static std::string const same = "nucleus";
    auto const index = static_cast<std::size_t>(row);
    if (col < 2)
        return col == 0 ? Data().numbers[index] : Data().texts[index];
    return col == 3 ? same : row % 1000 == 0 ? rare : empty;
}

/// The table in memory: what the list costs by itself.
class MemoryTable : public IAttrData {
public:
    [[nodiscard]] int GetNumCols() const override { return kColumns; }
    [[nodiscard]] DString GetColName(int col) const override { return "c" + std::to_string(col); }
    [[nodiscard]] ADIColType GetColType(int) const override { return ADICol_String; }
    [[nodiscard]] bool SetRow(int row) override { return (m_row = row) < kRows; }
    [[nodiscard]] DString GetText(int col) const override { return CellAt(m_row, col); }
    void InitTable(int, int) override {}
    void AddCol(char const *, ADIColType) override {}
    void AddRow() override {}
    void WriteString(char const *) override {}
    void WriteInt(std::int64_t) override {}
    void WriteDouble(double) override {}
    bool Finish() override { return false; }

private:
    int m_row = 0;
};

void Require(bool isSo) {
    if (!isSo)
        std::abort();
}

/// The direction of a first click: numbers from large to small, texts from A to Z.
void SortNumbersPlainly() {
    std::vector<std::pair<double, int>> keys;
    keys.reserve(kRows);
    for (int row = 0; row < kRows; ++row) {
        std::string const &text = CellAt(row, 0);
        double number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        keys.emplace_back(-number, row);
    }
    std::sort(keys.begin(), keys.end());
    Require(keys.front().first <= keys.back().first);
}

void SortTextsPlainly() {
    std::vector<std::pair<char const *, int>> keys;
    keys.reserve(kRows);
    for (int row = 0; row < kRows; ++row)
        keys.emplace_back(CellAt(row, 1).c_str(), row);
    std::sort(keys.begin(), keys.end(), [](auto const &a, auto const &b) { return strcasecmp(a.first, b.first) < 0; });
    Require(strcasecmp(keys.front().first, keys.back().first) <= 0);
}

Register const kSorting("attribute_table", [] {
    std::ignore = Data();
    std::size_t texts = 0;
    for (int row = 0; row < kRows; ++row)
        for (int col = 0; col < kColumns; ++col)
            texts += CellAt(row, col).size();
    CADIListCtrl list(new MemoryTable);
    list.AddAllColumns();
    std::size_t const before = ResidentBytes();
    double const readMs = BestMs(1, [&] { list.ReadAllRows(); });
    std::size_t const after = ResidentBytes();
    Require(list.GetNumRow() == kRows);
    Figure("attribute_table.keep", kRows / readMs, "rows/ms", "4 columns from memory into the list");
    Figure("attribute_table.row", static_cast<double>(after - before) / kRows, "bytes",
           Format("limit: 40 and the bytes of the texts; those are %.1f a row", static_cast<double>(texts) / kRows));
    for (bool const isNumeric : {true, false}) {
        // Before each sort the rows stand as they were read.
        Pair const pair = Compare(
            5, [&] { list.Sort(isNumeric ? 1 : 2, true); },
            [&] {
                isNumeric ? SortNumbersPlainly() : SortTextsPlainly();
                list.Sort(0, false);
            });
        std::string const name = std::string("attribute_table.sort_") + (isNumeric ? "numbers" : "texts");
        Figure(name, pair.firstMs, "ms", "1,000,000 rows, keys made of the cells' texts and sorted");
        Figure(name + ".std", pair.secondMs, "ms", "keys of the same texts and std::sort");
        Figure(name + ".ratio", pair.ratio, "x", "limit: 2 times as long");
    }
});

} // namespace
} // namespace zelvar::bench
