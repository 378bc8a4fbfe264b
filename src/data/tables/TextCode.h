#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zelvar {

/// What texts are made of, place by place: found out in one pass before they are put into words.
class TextFacts {
public:
    static constexpr std::size_t kPlaces = 128; ///< that are looked at

    /// Looks at a text from place `begin` on.
    void Look(std::string_view text, std::size_t begin);
    void Add(TextFacts const &others);

    std::vector<std::bitset<256>> used = std::vector<std::bitset<256>>(kPlaces); ///< bytes at each place
    std::size_t shortest = ~std::size_t{0};                                      ///< behind `begin`
    std::size_t longest = 0;
    std::uint64_t bytes = 0; ///< of all of them
};

/// Puts the beginnings of texts into words that compare as they do, case of ASCII letters not regarded. A place takes
/// no more of a word than it has different bytes, so that a word holds up to nineteen digits, or any number of places
/// that are the same in all texts.
class TextCode {
public:
    explicit TextCode(TextFacts const &facts);
    /// Places that a word holds; texts of equal words may differ behind them.
    [[nodiscard]] std::size_t Places() const { return m_shares.size(); }
    /// Of a text from place `begin` on, where the facts began.
    [[nodiscard]] std::uint64_t WordOf(std::string_view text, std::size_t begin) const;
    /// Of a whole text that may not be among those that the facts are about; nothing if the facts do not hold for it.
    [[nodiscard]] std::optional<std::uint64_t> WordIfKnown(std::string_view text) const;

private:
    static constexpr std::uint64_t kUnknown = ~std::uint64_t{0}; ///< more than any share

    std::size_t m_shortest = 0;
    std::vector<std::array<std::uint64_t, 256>> m_shares; ///< what a byte at a place adds
};

} // namespace zelvar
