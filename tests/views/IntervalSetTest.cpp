#include "zelvar/views/core/IntervalSet.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace zelvar {
namespace {

// Whatever is done in whatever order, the set is what a plain set of numbers would be.
TEST(IntervalSet, BehavesAsAPlainSetUnderRandomWork) {
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed,cert-msc51-cpp): the same run every time
    auto const pick = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
    IntervalSet set;
    std::set<int> plain;
    for (int step = 0; step < 4000; ++step) {
        int const first = pick(60);
        int const last = first + pick(11) - 1; // may be empty
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
        for (bool const inside : {true, false}) {
            std::vector<int> found;
            set.ForEachPiece(first, last, inside, [&](int row, int to) {
                for (; row <= to; ++row)
                    found.push_back(row);
            });
            std::vector<int> wanted;
            for (int row = first; row <= last; ++row)
                if (plain.contains(row) == inside)
                    wanted.push_back(row);
            ASSERT_EQ(found, wanted) << "step " << step;
        }
    }
}

} // namespace
} // namespace zelvar
