#include "zelvar/views/core/IntervalSet.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <utility>
#include <vector>

namespace zelvar {
namespace {

using Pieces = std::vector<std::pair<int, int>>;

IntervalSet Of(Pieces const &pieces) {
    IntervalSet set;
    for (auto const &[first, last] : pieces)
        set.Insert(first, last);
    return set;
}

TEST(IntervalSet, PiecesOfARangeAreItsMembersOrItsGaps) {
    IntervalSet const set = Of({{2, 4}, {8, 9}});
    Pieces in;
    Pieces out;
    set.ForEachPiece(3, 8, true, [&](int first, int last) { in.emplace_back(first, last); });
    set.ForEachPiece(3, 12, false, [&](int first, int last) { out.emplace_back(first, last); });
    EXPECT_EQ(in, (Pieces{{3, 4}, {8, 8}}));
    EXPECT_EQ(out, (Pieces{{5, 7}, {10, 12}}));
    EXPECT_TRUE(Of({{5, 4}}).IsEmpty());
}

// Whatever is done in whatever order, the set is what a plain set of numbers would be.
TEST(IntervalSet, BehavesAsAPlainSetUnderRandomWork) {
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed,cert-msc51-cpp): the same run every time
    auto const pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    IntervalSet set;
    std::set<int> plain;
    for (int step = 0; step < 4000; ++step) {
        int const first = pick(60);
        int const last = first + pick(10);
        int const action = pick(4);
        std::set<int> next;
        for (int const row : plain) {
            if (action == 2)
                next.insert(row >= first ? row + 3 : row);
            else if (action == 3 && (row < first || row >= first + 3))
                next.insert(row >= first ? row - 3 : row);
            else if (action < 2)
                next.insert(row);
        }
        for (int row = first; action < 2 && row <= last; ++row) {
            if (action == 0)
                next.insert(row);
            else
                next.erase(row);
        }
        plain = next;
        action == 0   ? set.Insert(first, last)
        : action == 1 ? set.Remove(first, last)
        : action == 2 ? set.InsertRows(first, 3)
                      : set.RemoveRows(first, 3);
        ASSERT_EQ(set.Count(), static_cast<int>(plain.size())) << "step " << step;
        std::vector<int> rows;
        for (int row = set.NextFrom(0); row >= 0; row = set.NextFrom(row + 1))
            rows.push_back(row);
        ASSERT_EQ(rows, std::vector<int>(plain.begin(), plain.end())) << "step " << step;
        int before = -2;
        set.ForEachInterval([&](int from, int to) {
            ASSERT_GT(from, before + 1); // no two pieces touch
            before = to;
        });
        ASSERT_EQ(set.Contains(first), plain.contains(first));
    }
}

} // namespace
} // namespace zelvar
