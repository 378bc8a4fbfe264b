#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace zelvar {

/// Texts and what they are in another language, as gettext's tools compile them ("zelvar_de.mo").
class ZELVAR_API Catalogue {
public:
    /// Nothing for a file that cannot be read or is none.
    [[nodiscard]] static std::optional<Catalogue> Load(DString const &file);

    /// Null for a text that it does not have. Of a text with a number it has two forms, for one and for all other
    /// counts, which serves German and its like. The result lives as long as the catalogue.
    [[nodiscard]] char const *Find(char const *text, long long count) const;

private:
    explicit Catalogue(DString bytes) : m_bytes(std::move(bytes)) {}
    [[nodiscard]] std::uint32_t NumberAt(std::size_t place) const;
    /// The texts of a table, each with a zero behind it; false if one lies outside of the file.
    [[nodiscard]] bool ReadTable(std::size_t place, std::size_t count, std::vector<std::string_view> &texts) const;

    DString m_bytes;
    std::vector<std::string_view> m_texts;        ///< in order
    std::vector<std::string_view> m_translations; ///< by text; its forms with a zero between them
};

/// The languages that the user's environment names, the preferred one first: "de_AT", "de". Empty for English and where
/// no language is wanted. `variable` reads the environment and yields null for what is not set.
[[nodiscard]] ZELVAR_API std::vector<DString>
UserLanguages(std::function<char const *(char const *name)> const &variable);

/// A text for seeing what is not translated and what has too little room: in brackets and 40 per cent longer. Its
/// letters, places for numbers and mnemonics stay.
[[nodiscard]] ZELVAR_API DString PseudoText(std::string_view text);

} // namespace zelvar
