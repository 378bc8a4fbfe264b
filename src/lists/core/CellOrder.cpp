#include "zelvar/lists/core/CellOrder.h"

#include "zelvar/base/DString.h"
#include "zelvar/lists/core/CellNumber.h"
#include "zelvar/views/core/MergeSort.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace zelvar {

namespace {

constexpr std::size_t kNumberBytes = 512; // more digits change nothing
constexpr std::size_t kHeadBytes = sizeof CellKey::order;
constexpr unsigned kStepsPerQuestion = 16 * 1024;

constexpr unsigned char LowerAscii(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

/// Numbers as words that compare in the same way.
std::uint64_t OrderOf(double number) {
    constexpr std::uint64_t sign = std::uint64_t{1} << 63U;
    auto const bits = std::bit_cast<std::uint64_t>(number);
    return (bits & sign) != 0 ? ~bits : bits | sign;
}

/// The first bytes of a text: most comparisons end there, without a look at the text itself.
std::uint64_t HeadOf(char const *text) {
    std::uint64_t head = 0;
    for (std::size_t i = 0; i < kHeadBytes; ++i) {
        head = head << 8U | LowerAscii(*text);
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
    while (*first != '\0' && LowerAscii(*first) == LowerAscii(*second))
        ++first, ++second;
    return LowerAscii(*first) > LowerAscii(*second);
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

double SortNumberOf(char const *text) {
    std::string_view const begin(text, strnlen(text, kNumberBytes));
    double const number = ParseCellNumber(begin).value_or(0);
    if (std::isfinite(number))
        return number;
    // "Nantes" and "Information" are no numbers.
    std::string_view word = begin.substr(begin.find_first_not_of(" \t\n\v\f\r"));
    word.remove_prefix(word.front() == '-' || word.front() == '+' ? 1 : 0);
    word = word.substr(0, word.find_last_not_of(" \t\n\v\f\r") + 1);
    bool const isDigit = (word.front() >= '0' && word.front() <= '9') || word.front() == '.';
    return isDigit || EqualNoCase(word, "inf") || EqualNoCase(word, "infinity") ? number : 0;
}

bool OrderByCells(std::vector<CellKey> keys, bool ascending, std::function<bool()> const &isStopped,
                  std::vector<int> &ids) {
    StopWatch watch(isStopped);
    // 1. Read each cell once; numbers and the rest go to lists of their own.
    std::vector<CellKey> numbers;
    std::size_t texts = 0;
    for (CellKey &key : keys) {
        if (watch.IsStopped())
            return false;
        key.text = key.text == nullptr ? "" : key.text;
        double const number = SortNumberOf(key.text);
        key.order = number == 0 ? HeadOf(key.text) : OrderOf(ascending ? -number : number);
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
    auto const isBeforeZero = [](CellKey const &key) { return key.order < OrderOf(0); };
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
