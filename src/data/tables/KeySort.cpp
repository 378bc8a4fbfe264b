#include "zelvar/data/tables/KeySort.h"

#include "zelvar/base/SortDistinct.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>
#include <vector>

namespace zelvar {

namespace {

constexpr unsigned kBits = 10; // of a word that are looked at together
constexpr std::size_t kBuckets = std::size_t{1} << kBits;
constexpr std::size_t kFew = std::size_t{1} << 10U;  // that are sorted by comparison
constexpr std::size_t kMany = std::size_t{1} << 20U; // that several threads share
constexpr std::size_t kStepsPerQuestion = std::size_t{64} << 10U;

struct Pairs {
    std::span<std::uint64_t> keys;
    std::span<std::uint32_t> rows;

    [[nodiscard]] std::size_t Size() const { return keys.size(); }
    [[nodiscard]] Pairs Part(std::size_t begin, std::size_t end) const {
        return {keys.subspan(begin, end - begin), rows.subspan(begin, end - begin)};
    }
};

void SortFew(Pairs pairs) {
    struct Pair {
        std::uint64_t key;
        std::uint32_t row;
    };
    thread_local std::vector<Pair> together;
    together.resize(pairs.Size());
    for (std::size_t i = 0; i < pairs.Size(); ++i)
        together[i] = {pairs.keys[i], pairs.rows[i]};
    std::sort(together.begin(), together.end(),
              [](Pair const &a, Pair const &b) { return a.key != b.key ? a.key < b.key : a.row < b.row; });
    for (std::size_t i = 0; i < pairs.Size(); ++i) {
        pairs.keys[i] = together[i].key;
        pairs.rows[i] = together[i].row;
    }
}

/// Where each bucket begins, and the end of the last: one for each value of the highest bits in which the words differ.
using Bounds = std::array<std::size_t, kBuckets + 1>;

/// Brings the pairs into buckets, in place. False if it is stopped.
template <class IsStopped>
bool Spread(Pairs pairs, std::uint64_t least, std::uint64_t most, Bounds &bounds, IsStopped const &isStopped) {
    auto const width = static_cast<unsigned>(std::bit_width(most - least));
    unsigned const shift = width > kBits ? width - kBits : 0;
    auto const bucketOf = [least, shift](std::uint64_t key) {
        return static_cast<std::size_t>((key - least) >> shift);
    };
    bounds.fill(0);
    for (std::uint64_t const key : pairs.keys)
        ++bounds[bucketOf(key) + 1];
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket)
        bounds[bucket + 1] += bounds[bucket];
    std::array<std::size_t, kBuckets> next{};
    std::copy_n(bounds.begin(), kBuckets, next.begin());
    std::size_t steps = 0;
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket)
        while (next[bucket] < bounds[bucket + 1]) {
            // Each step brings one pair to where it belongs.
            std::size_t const at = next[bucket];
            std::size_t const home = bucketOf(pairs.keys[at]);
            std::size_t const to = next[home]++;
            std::swap(pairs.keys[at], pairs.keys[to]);
            std::swap(pairs.rows[at], pairs.rows[to]);
            if (++steps % kStepsPerQuestion == 0 && isStopped())
                return false;
        }
    return true;
}

/// Whether nothing is left to be done but to sort by numbers, which then has been done.
bool SortEqual(Pairs pairs, std::uint64_t &least, std::uint64_t &most) {
    auto const [first, last] = std::minmax_element(pairs.keys.begin(), pairs.keys.end());
    least = *first;
    most = *last;
    if (least == most)
        SortDistinct(pairs.rows);
    return least == most;
}

void SortAlone(Pairs pairs) {
    std::uint64_t least = 0;
    std::uint64_t most = 0;
    if (pairs.Size() < 2 || SortEqual(pairs, least, most))
        return;
    if (pairs.Size() <= kFew) {
        SortFew(pairs);
        return;
    }
    auto const bounds = std::make_unique<Bounds>();
    std::ignore = Spread(pairs, least, most, *bounds, [] { return false; });
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket)
        SortAlone(pairs.Part((*bounds)[bucket], (*bounds)[bucket + 1]));
}

bool SortTogether(Pairs pairs, SharedWork &work) {
    if (pairs.Size() < kMany) {
        SortAlone(pairs);
        return !work.IsStopped();
    }
    std::uint64_t least = 0;
    std::uint64_t most = 0;
    if (SortEqual(pairs, least, most))
        return true;
    auto const bounds = std::make_unique<Bounds>();
    if (!Spread(pairs, least, most, *bounds, [&work] { return work.IsStopped(); }))
        return false;
    auto const partOf = [&](std::size_t bucket) { return pairs.Part((*bounds)[bucket], (*bounds)[bucket + 1]); };
    auto const isLarge = [&](std::size_t bucket) { return partOf(bucket).Size() >= kMany; };
    if (!work.Run(kBuckets, [&](std::size_t, std::size_t bucket) {
            if (!isLarge(bucket))
                SortAlone(partOf(bucket));
            return true;
        }))
        return false;
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket)
        if (isLarge(bucket) && !SortTogether(partOf(bucket), work))
            return false;
    return true;
}

} // namespace

bool SortByKeys(std::span<std::uint64_t> keys, std::span<std::uint32_t> rows, SharedWork &work) {
    return SortTogether({keys, rows}, work);
}

} // namespace zelvar
