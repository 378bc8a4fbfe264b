#include "zelvar/data/tables/CsvSort.h"

#include "support/Test.h"
#include "zelvar/base/CellNumber.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/tables/CsvScan.h"
#include "zelvar/data/tables/KeySort.h"

#include <numeric>
#include <random>

#include <strings.h>

namespace zelvar {
namespace {

using Lines = std::vector<DString>;

CsvReader::Read ReadFrom(DString const &bytes) {
    return [&bytes](std::uint64_t offset, char *buffer, std::size_t size) {
        return offset < bytes.size() ? bytes.copy(buffer, size, offset) : std::size_t{0};
    };
}

/// A file in memory, which has no names of columns.
struct CsvFile {
    DString bytes;
    CsvEncoding encoding;
    StopPoll stop{nullptr};
    CsvIndex index{ReadFrom(bytes), ',', 0, 0};

    [[nodiscard]] std::optional<std::vector<std::uint32_t>> Sorted(bool ascending, std::size_t mostHeld,
                                                                   RowOrder &order) {
        EXPECT_TRUE(index.Extend(std::numeric_limits<std::int64_t>::max(), ~std::uint64_t{0}, stop));
        order = RowOrder(static_cast<std::size_t>(index.Rows()));
        CsvSort sort(index, encoding, 1, ascending, stop, mostHeld);
        return sort.Run(order) == CsvSort::Result::Done ? std::optional(order.rows) : std::nullopt;
    }
};

TEST(CsvIndex, FindsTheRowsThatTheReaderReadsInWhateverIsThere) {
    std::mt19937 random(3);
    for (int run = 0; run < 3000; ++run) {
        CsvFile file;
        for (std::size_t left = random() % 60; left > 0; --left)
            file.bytes += "ab,,\"\"\"\n\n\r"[random() % 10];
        file.bytes += run % 500 == 0 ? "\n\"" + DString(400'000, 'x') + "\"\"\n,\"," + file.bytes : "";
        CsvReader reader(ReadFrom(file.bytes));
        std::vector<Lines> expected;
        for (CsvRecord record; reader.Next(record, 1'000'000) == CsvReader::Result::Record;) {
            expected.emplace_back();
            for (std::size_t i = 0; i < record.Count(); ++i)
                expected.back().emplace_back(record.Field(i));
        }
        while (!file.index.IsEnd()) // in steps as well as at once
            ASSERT_TRUE(file.index.Extend(file.index.Rows() + 1, ~std::uint64_t{0}, file.stop));
        std::vector<Lines> found;
        EXPECT_TRUE(
            CsvIndex::RunReader(file.index).ForEach(0, file.index.RunCount(), [&](std::int64_t row, CsvScan &scan) {
                ASSERT_EQ(row, static_cast<std::int64_t>(found.size()));
                found.emplace_back();
                for (std::size_t i = 0; i < expected.at(found.size() - 1).size(); ++i)
                    found.back().emplace_back(scan.Field());
                EXPECT_EQ(scan.Field(), "");
            }));
        ASSERT_EQ(found, expected) << file.bytes;
    }
}

/// What an order is, by its definition.
bool IsBehind(DString const &a, DString const &b) {
    double const first = SortNumberOf(a);
    double const second = SortNumberOf(b);
    return first == 0 && second == 0 ? strcasecmp(a.c_str(), b.c_str()) > 0 : first < second;
}

void ExpectSorted(CsvFile &file, Lines const &texts, bool ascending) {
    std::vector<std::uint32_t> expected(texts.size());
    std::iota(expected.begin(), expected.end(), 0U);
    auto const isBehind = [&](std::uint32_t a, std::uint32_t b) {
        return ascending ? IsBehind(texts[a], texts[b]) : IsBehind(texts[b], texts[a]);
    };
    std::ranges::stable_sort(expected, [&](auto a, auto b) { return isBehind(b, a); });
    for (std::size_t const mostHeld : {std::size_t{0}, CsvSort::kMostHeld}) {
        RowOrder order;
        ASSERT_EQ(file.Sorted(ascending, mostHeld, order), expected);
        for (std::size_t place = 1; place < expected.size(); ++place)
            ASSERT_EQ(order.IsTied(place), !isBehind(expected[place], expected[place - 1]));
    }
}

TEST(CsvSort, IsTheDefinedOneForEveryMixtureHoweverMuchTheTextsHaveInCommon) {
    std::mt19937 random(5);
    DString const common(150, 'c');
    for (int kind = 0; kind < 4; ++kind)
        for (bool const ascending : {true, false}) {
            CsvFile file;
            Lines texts;
            for (int row = 0; row < 3000; ++row) {
                DString text = std::to_string(static_cast<int>(random() % 700) - 350);
                if (kind == 1 || (kind == 2 && random() % 2 == 0)) // beginnings that no word tells apart
                    text = common.substr(0, random() % 3 * 75) + DString(random() % 40, "xX\xFD"[random() % 3]) + text;
                else if (kind == 3)
                    text = DString(1, static_cast<char>('A' + random() % 60)) + "\"\"";
                texts.push_back(kind == 3 ? text.substr(0, 2) : text);
                file.bytes += "id," + (kind == 3 ? "\"" + text + "\"" : text) + (row % 2 == 0 ? ",z\r\n" : "\n");
            }
            for (DString &text : texts) // as they are shown
                text = ToValidUtf8(text);
            SCOPED_TRACE(kind);
            ExpectSorted(file, texts, ascending);
        }
}

TEST(CsvSort, IsTheDefinedOneWhereFewOfManyTextsAreUnlikeTheOthers) {
    for (char const *odd : {"name 123", "17", "NAME 1", "name 1!", "name", "name 12 and more than others", "-3"})
        for (bool const ascending : {true, false}) {
            SCOPED_TRACE(odd);
            CsvFile file;
            Lines texts;
            for (int row = 0; row < 20'000; ++row) {
                texts.push_back(row == 5'000 ? DString(odd) : "name " + std::to_string(row * 7919 % 9'000));
                file.bytes += "1," + texts.back() + "\n";
            }
            ExpectSorted(file, texts, ascending);
        }
}

TEST(CsvSort, FailsWhereTheFileChangedAndWhereItIsStopped) {
    CsvFile file;
    for (int row = 0; row < 20'000; ++row)
        file.bytes += "1,text " + std::to_string(row) + "\n";
    RowOrder order;
    EXPECT_TRUE(file.Sorted(true, 0, order));
    {
        RequestScope const scope(RequestKind::Properties, [] { return true; });
        EXPECT_EQ(CsvSort(file.index, file.encoding, 1, true, file.stop).Run(order), CsvSort::Result::Stopped);
    }
    file.bytes[100'000] = 'x';
    EXPECT_EQ(CsvSort(file.index, file.encoding, 1, true, file.stop).Run(order), CsvSort::Result::Changed);
    file.bytes.resize(150'000);
    EXPECT_FALSE(CsvIndex::RunReader(file.index).ForEach(0, file.index.RunCount(), [](std::int64_t, CsvScan &) {}));
}

TEST(KeySort, SortsByWordsAndRowsOnAllThreads) {
    std::mt19937_64 random(1);
    for (std::uint64_t const kinds : {std::uint64_t{1}, std::uint64_t{5}, std::uint64_t{1} << 40U}) {
        std::vector<std::uint64_t> keys(1'500'000);
        for (std::uint64_t &key : keys)
            key = random() % kinds;
        keys[7] = ~std::uint64_t{0}; // far away: nearly all of the others stand together at first
        std::vector<std::uint32_t> rows(keys.size());
        std::iota(rows.begin(), rows.end(), 0U);
        std::vector<std::uint64_t> const keyOf = keys;
        StopPoll stop(nullptr);
        SharedWork work(stop);
        ASSERT_TRUE(SortByKeys(keys, rows, work));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            ASSERT_EQ(keys[i], keyOf[rows[i]]);
            ASSERT_TRUE(i == 0 || std::pair(keys[i - 1], rows[i - 1]) < std::pair(keys[i], rows[i])) << i;
        }
    }
}

} // namespace
} // namespace zelvar
