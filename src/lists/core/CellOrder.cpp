#include "zelvar/lists/core/CellOrder.h"

#include "zelvar/base/CellNumber.h"
#include "zelvar/views/core/MergeSort.h"

#include <algorithm>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::size_t kHeadBytes = sizeof CellKey::order;
constexpr unsigned kStepsPerQuestion = 16 * 1024;

/// The first bytes of a text: most comparisons end there, without a look at the text itself.
std::uint64_t HeadOf(char const *text) {
    std::uint64_t head = 0;
    for (std::size_t i = 0; i < kHeadBytes; ++i) {
        head = head << 8U | SortByteOf(*text);
        text += *text == '\0' ? 0 : 1;
    }
    return head;
}

/// Whether `a` stands behind `b`.
bool IsTextBehind(CellKey const &a, CellKey const &b) {
    if (a.order != b.order || (a.order & 0xFFU) == 0)
        return a.order > b.order;
    char const *first = a.text + kHeadBytes;
    char const *second = b.text + kHeadBytes;
    while (*first != '\0' && SortByteOf(*first) == SortByteOf(*second))
        ++first, ++second;
    return SortByteOf(*first) > SortByteOf(*second);
}

class StopWatch {
public:
    explicit StopWatch(std::function<bool()> const &isStopped) : m_isStopped(isStopped) {}
    bool IsStopped() {
        if (++m_steps % kStepsPerQuestion == 0 && !m_stopped && m_isStopped)
            m_stopped = m_isStopped();
        return m_stopped;
    }

private:
    std::function<bool()> const &m_isStopped;
    unsigned m_steps = 0;
    bool m_stopped = false;
};

/// Sorts by their words alone: 11 bits after the other, from the lowest; those that all words have in common cost
/// nothing more.
bool SortByWords(std::vector<CellKey> &keys, StopWatch &watch) {
    constexpr unsigned bits = 11;
    constexpr std::size_t values = std::size_t{1} << bits;
    std::vector<CellKey> sorted(keys.size());
    for (unsigned shift = 0; shift < 64; shift += bits) {
        auto const digit = [shift](CellKey const &key) { return key.order >> shift & (values - 1); };
        std::vector<std::size_t> places(values + 1);
        for (CellKey const &key : keys)
            ++places[digit(key) + 1];
        if (std::find(places.begin(), places.end(), keys.size()) != places.end())
            continue;
        for (std::size_t value = 0; value < values; ++value)
            places[value + 1] += places[value];
        for (CellKey const &key : keys) {
            if (watch.IsStopped())
                return false;
            sorted[places[digit(key)]++] = key;
        }
        keys.swap(sorted);
    }
    return true;
}

} // namespace

bool OrderByCells(std::vector<CellKey> keys, bool ascending, std::function<bool()> const &isStopped,
                  std::vector<std::uint32_t> &ids) {
    StopWatch watch(isStopped);
    // 1. Read each cell once; numbers and the rest go to lists of their own.
    std::vector<CellKey> numbers;
    std::size_t texts = 0;
    for (CellKey &key : keys) {
        if (watch.IsStopped())
            return false;
        key.text = key.text == nullptr ? "" : key.text;
        double const number = SortNumberOf(key.text);
        key.order = number == 0 ? HeadOf(key.text) : SortWordOf(ascending ? -number : number);
        if (number == 0)
            keys[texts++] = key;
        else
            numbers.push_back(key);
    }
    keys.resize(texts);
    // 2. Sort either.
    if (!SortByWords(numbers, watch))
        return false;
    MergeSort(keys, [&](CellKey const &a, CellKey const &b) {
        return !watch.IsStopped() && (ascending ? IsTextBehind(a, b) : IsTextBehind(b, a));
    });
    // A stop may have come with the last steps, and the answer would be a wrong one.
    if (watch.IsStopped())
        return false;
    // 3. Join: zero stands between the numbers.
    auto const isBeforeZero = [](CellKey const &key) { return key.order < SortWordOf(0); };
    auto const zero = std::partition_point(numbers.begin(), numbers.end(), isBeforeZero);
    auto out = ids.begin();
    auto const append = [&](auto from, auto to) {
        out = std::transform(from, to, out, [](CellKey const &key) { return key.id; });
    };
    append(numbers.begin(), zero);
    append(keys.begin(), keys.end());
    append(zero, numbers.end());
    return true;
}

} // namespace zelvar
