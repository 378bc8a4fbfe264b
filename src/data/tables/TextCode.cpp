#include "zelvar/data/tables/TextCode.h"

#include "zelvar/base/CellNumber.h"

#include <algorithm>
#include <limits>

namespace zelvar {

void TextFacts::Look(std::string_view text, std::size_t begin) {
    text.remove_prefix(std::min(begin, text.size()));
    shortest = std::min(shortest, text.size());
    longest = std::max(longest, text.size());
    bytes += text.size();
    std::size_t const seen = std::min(text.size(), kPlaces);
    for (std::size_t place = 0; place < seen; ++place)
        used[place].set(SortByteOf(text[place]));
}

void TextFacts::Add(TextFacts const &others) {
    shortest = std::min(shortest, others.shortest);
    longest = std::max(longest, others.longest);
    bytes += others.bytes;
    for (std::size_t place = 0; place < kPlaces; ++place)
        used[place] |= others.used[place];
}

TextCode::TextCode(TextFacts const &facts) : m_shortest(facts.shortest) {
    // Where a text may end, that is one more thing to be told apart, before all bytes.
    auto const choicesAt = [&](std::size_t place) {
        return facts.used[place].count() + (facts.shortest <= place ? 1 : 0);
    };
    std::size_t const most = std::min(facts.longest, TextFacts::kPlaces);
    std::uint64_t product = 1;
    std::size_t places = 0;
    for (; places < most && product <= std::numeric_limits<std::uint64_t>::max() / choicesAt(places); ++places)
        product *= choicesAt(places);
    m_shares.resize(places);
    std::uint64_t weight = 1;
    for (std::size_t place = places; place-- > 0; weight *= choicesAt(place)) {
        std::uint64_t rank = facts.shortest <= place ? 1 : 0;
        std::array<std::uint64_t, 256> &shares = m_shares[place];
        shares.fill(kUnknown);
        for (std::size_t byte = 0; byte < shares.size(); ++byte)
            if (facts.used[place].test(byte))
                shares[byte] = weight * rank++;
        for (char upper = 'A'; upper <= 'Z'; ++upper)
            shares[static_cast<unsigned char>(upper)] = shares[SortByteOf(upper)];
    }
}

std::uint64_t TextCode::WordOf(std::string_view text, std::size_t begin) const {
    text.remove_prefix(std::min(begin, text.size()));
    std::size_t const seen = std::min(text.size(), m_shares.size());
    std::uint64_t word = 0;
    for (std::size_t place = 0; place < seen; ++place)
        word += m_shares[place][static_cast<unsigned char>(text[place])];
    return word;
}

std::optional<std::uint64_t> TextCode::WordIfKnown(std::string_view text) const {
    std::size_t const seen = std::min(text.size(), m_shares.size());
    bool isKnown = text.size() >= std::min(m_shortest, m_shares.size());
    std::uint64_t word = 0;
    for (std::size_t place = 0; place < seen; ++place) {
        std::uint64_t const share = m_shares[place][static_cast<unsigned char>(text[place])];
        isKnown = isKnown && share != kUnknown;
        word += share;
    }
    return isKnown ? std::optional(word) : std::nullopt;
}

} // namespace zelvar
