#include "zelvar/base/SortDistinct.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace zelvar {

void SortDistinct(std::span<std::uint32_t> numbers) {
    if (std::is_sorted(numbers.begin(), numbers.end()))
        return;
    auto const [first, last] = std::minmax_element(numbers.begin(), numbers.end());
    std::uint32_t const least = *first;
    constexpr unsigned bits = 64;
    std::size_t const words = (*last - least) / bits + 1;
    if (words > numbers.size()) {
        std::sort(numbers.begin(), numbers.end());
        return;
    }
    std::vector<std::uint64_t> present(words);
    for (std::uint32_t const number : numbers)
        present[(number - least) / bits] |= std::uint64_t{1} << ((number - least) % bits);
    auto out = numbers.begin();
    for (std::size_t word = 0; word < words; ++word)
        for (std::uint64_t left = present[word]; left != 0; left &= left - 1)
            *out++ =
                least + static_cast<std::uint32_t>(word * bits) + static_cast<std::uint32_t>(std::countr_zero(left));
}

} // namespace zelvar
