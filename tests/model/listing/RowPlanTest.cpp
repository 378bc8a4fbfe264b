#include "zelvar/model/listing/RowPlan.h"

#include "support/Test.h"

#include <random>

namespace zelvar {
namespace {

using Batch = std::vector<PendingRow<std::string>>;

std::vector<std::int32_t> RowsOf(Batch const &batch) {
    std::vector<std::int32_t> rows;
    for (auto const &record : batch)
        rows.push_back(record.row);
    return rows;
}

/// What the plan must give, done one insertion after the other.
std::vector<std::string> InsertedOneByOne(std::vector<std::string> rows, Batch const &batch) {
    for (auto const &record : batch) {
        bool const atEnd = record.row < 0 || static_cast<std::size_t>(record.row) > rows.size();
        rows.insert(atEnd ? rows.end() : rows.begin() + record.row, record.item);
    }
    return rows;
}

std::vector<std::string> Planned(std::vector<std::string> rows, Batch const &batch) {
    RowPlan const plan(rows.size(), RowsOf(batch));
    plan.Apply(rows, batch);
    return rows;
}

TEST(RowPlan, GivesTheResultOfSingleInsertions) {
    std::mt19937 random(7); // rows before the first and behind the last as well
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> rows(random() % 150);
        for (std::size_t i = 0; i < rows.size(); ++i)
            rows[i] = "old" + std::to_string(i);
        Batch batch(random() % 150);
        for (std::size_t i = 0; i < batch.size(); ++i)
            batch[i] = {static_cast<std::int32_t>(random() % (rows.size() + i + 4)) - 1, std::to_string(i)};
        std::vector<std::string> const expected = InsertedOneByOne(rows, batch);
        ASSERT_EQ(Planned(rows, batch), expected) << round;

        RowPlan const plan(rows.size(), RowsOf(batch));
        std::vector<std::uint32_t> selected;
        for (std::uint32_t row = 0; row < rows.size(); row += 3)
            selected.push_back(row);
        std::vector<std::uint32_t> const moved = plan.MoveOldRows(selected);
        ASSERT_EQ(moved.size(), selected.size());
        for (std::size_t i = 0; i < selected.size(); ++i)
            ASSERT_EQ(expected[moved[i]], rows[selected[i]]) << round;
        for (std::size_t i = 0; i < batch.size(); ++i)
            ASSERT_EQ(expected[plan.InsertedRows()[i]], batch[i].item) << round;
    }
}

TEST(RowPlan, ARowThatIsNoneIsNotMoved) {
    RowPlan const plan(2, {0});
    EXPECT_THAT(plan.MoveOldRows({1, 2}), ElementsAre(2));
}

} // namespace
} // namespace zelvar
