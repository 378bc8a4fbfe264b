#include "zelvar/drawing/core/TextBlockRule.h"

#include <algorithm>

namespace zelvar {

std::vector<ProductNameHit> FindProductName(std::string_view text) {
    std::vector<ProductNameHit> hits;
    std::size_t offset = 0;
    while (offset < text.size()) {
        std::size_t const at = text.find(kProductName, offset);
        if (at == std::string_view::npos)
            break;
        std::string_view const before = text.substr(0, at);
        std::size_t const feed = before.rfind('\n');
        ProductNameHit const hit{.line = static_cast<int>(std::count(before.begin(), before.end(), '\n')),
                                 .lineBegin = feed == std::string_view::npos ? 0 : feed + 1,
                                 .end = at + kProductName.size()};
        if (hits.empty() || hits.back() != hit)
            hits.push_back(hit);
        offset += kProductName.size();
    }
    return hits;
}

SignFont SignFontFor(int textHeight, int textWeight) {
    constexpr int kLowest = 13;
    constexpr int kFirstAtFullWeight = 15;
    constexpr int kThin = 100;
    int const height = textHeight / 2;
    return {std::max(height, kLowest), height < kFirstAtFullWeight ? kThin : textWeight};
}

} // namespace zelvar
