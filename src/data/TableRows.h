#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace zelvar {

/// Rows of a table that follow one another, as texts.
struct ADIRows {
    std::int64_t first = 0; ///< number of the first one
    int count = 0;
    bool isEnd = false;              ///< the table ends behind them
    DString texts;                   ///< of all cells, row by row, one behind the other; valid UTF-8
    std::vector<std::uint32_t> ends; ///< where each cell ends in `texts`; a row has as many as the table has columns

    [[nodiscard]] std::string_view Cell(std::size_t index) const {
        std::size_t const begin = index == 0 ? 0 : ends[index - 1];
        return std::string_view(texts).substr(begin, ends[index] - begin);
    }
};

/// What is known of a table whose rows keep their places.
struct TableExtent {
    std::int64_t rows = 0;    ///< from the first on
    std::int64_t bytes = 0;   ///< that they take where they are
    bool isEnd = false;       ///< there are no more
    std::uint64_t digest = 0; ///< of those bytes
};

/// The rows of a table in an order.
struct RowOrder {
    std::vector<std::uint32_t> rows; ///< their numbers
    std::vector<std::uint64_t> ties; ///< a bit for each that compares as equal to the one before it, from the lowest on

    explicit RowOrder(std::size_t count = 0) : rows(count), ties((count + kBits - 1) / kBits) {}
    [[nodiscard]] bool IsTied(std::size_t place) const { return (ties[place / kBits] >> (place % kBits) & 1U) != 0; }
    void SetTied(std::size_t place, bool isTied) {
        std::uint64_t const bit = std::uint64_t{1} << (place % kBits);
        ties[place / kBits] = isTied ? ties[place / kBits] | bit : ties[place / kBits] & ~bit;
    }

private:
    static constexpr std::size_t kBits = 64;
};

} // namespace zelvar
