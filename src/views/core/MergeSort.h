#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace zelvar {

namespace detail {

template <class T, class ComesAfter>
void MergeSortRange(std::vector<T> &values, std::vector<T> &scratch, std::size_t first, std::size_t count,
                    ComesAfter const &comesAfter) {
    if (count < 2)
        return;
    std::size_t const leftCount = count / 2;
    std::size_t const middle = first + leftCount;
    std::size_t const end = first + count;
    MergeSortRange(values, scratch, first, leftCount, comesAfter);
    MergeSortRange(values, scratch, middle, count - leftCount, comesAfter);

    // The left half steps aside; the merged rows cannot overtake what is left of the right half.
    for (std::size_t i = 0; i < leftCount; ++i)
        scratch[i] = std::move(values[first + i]);
    std::size_t left = 0;
    std::size_t right = middle;
    std::size_t out = first;
    while (left < leftCount && right < end)
        values[out++] =
            comesAfter(scratch[left], values[right]) ? std::move(values[right++]) : std::move(scratch[left++]);
    while (left < leftCount)
        values[out++] = std::move(scratch[left++]);
}

} // namespace detail

/// Top-down merge sort on one question: does `a`, which stands in the left half, come after `b` of the right half?
///
/// The order among values that compare as equal follows from the answer alone. "No" for equals keeps them as they
/// stood; "yes" for equals turns them round. A question that contradicts itself gives some order and nothing worse,
/// which the standard library's sorts do not promise.
template <class T, class ComesAfter>
void MergeSort(std::vector<T> &values, ComesAfter const &comesAfter) {
    std::vector<T> scratch(values.size() / 2 + 1);
    detail::MergeSortRange(values, scratch, 0, values.size(), comesAfter);
}

} // namespace zelvar
