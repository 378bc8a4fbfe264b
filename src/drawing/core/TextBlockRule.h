#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Export.h"

#include <vector>

namespace zelvar {

/// The product's name: the registered-trademark sign stands behind it in a text block.
inline constexpr std::string_view kProductName = "Morvane222";

/// One occurrence of the product's name in a text. Positions are bytes.
struct ProductNameHit {
    int line = 0;              ///< line feeds before it
    std::size_t lineBegin = 0; ///< position behind the last of them
    std::size_t end = 0;       ///< position behind the name

    friend bool operator==(ProductNameHit const &, ProductNameHit const &) = default;
};

/// Every occurrence that gets a sign, in order. Counting goes on by the name's length after each hit, so a hit far
/// along is met several times; it is listed once, since a sign over itself looks the same.
[[nodiscard]] ZELVAR_API std::vector<ProductNameHit> FindProductName(std::string_view text);

/// Height and weight of the sign's font.
struct SignFont {
    int height = 0;
    int weight = 0;

    friend bool operator==(SignFont const &, SignFont const &) = default;
};
/// Half the text's height. A small sign is thin and never lower than 13 pixels, to stay readable.
[[nodiscard]] ZELVAR_API SignFont SignFontFor(int textHeight, int textWeight);

} // namespace zelvar
