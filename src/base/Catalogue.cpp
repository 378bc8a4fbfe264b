#include "zelvar/base/Catalogue.h"

#include <algorithm>
#include <cstring>
#include <fstream>

namespace zelvar {

namespace {

constexpr std::uint32_t kMagic = 0x950412DE;
constexpr std::size_t kHeader = 28; // bytes
constexpr std::streamoff kMostBytes = 64 << 20;
constexpr std::size_t kEntry = 8; // bytes: length and place
constexpr std::size_t kCountAt = 8;
constexpr std::size_t kTextsAt = 12;
constexpr std::size_t kTranslationsAt = 16;

std::string_view FirstForm(std::string_view text) { return text.substr(0, text.find('\0')); }

} // namespace

std::uint32_t Catalogue::NumberAt(std::size_t place) const {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i > 0; --i)
        number = number << 8U | static_cast<unsigned char>(m_bytes[place + i - 1]); // the least byte stands first
    return number;
}

bool Catalogue::ReadTable(std::size_t place, std::size_t count, std::vector<std::string_view> &texts) const {
    if (place > m_bytes.size() || count > (m_bytes.size() - place) / kEntry)
        return false;
    texts.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const length = NumberAt(place + i * kEntry);
        std::size_t const begin = NumberAt(place + i * kEntry + 4);
        if (begin >= m_bytes.size() || length >= m_bytes.size() - begin || m_bytes[begin + length] != '\0')
            return false;
        texts.emplace_back(m_bytes.data() + begin, length);
    }
    return true;
}

std::optional<Catalogue> Catalogue::Load(DString const &file) {
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    std::streamoff const size = stream ? static_cast<std::streamoff>(stream.tellg()) : 0;
    if (size < static_cast<std::streamoff>(kHeader) || size > kMostBytes)
        return std::nullopt;
    DString bytes(static_cast<std::size_t>(size), '\0');
    if (!stream.seekg(0).read(bytes.data(), size))
        return std::nullopt;
    // Long texts move with their characters; views into them stay.
    Catalogue catalogue(std::move(bytes));
    std::size_t const count = catalogue.NumberAt(kCountAt);
    if (catalogue.NumberAt(0) != kMagic ||
        !catalogue.ReadTable(catalogue.NumberAt(kTextsAt), count, catalogue.m_texts) ||
        !catalogue.ReadTable(catalogue.NumberAt(kTranslationsAt), count, catalogue.m_translations))
        return std::nullopt;
    return catalogue;
}

char const *Catalogue::Find(char const *text, long long count) const {
    std::string_view const wanted = text;
    auto const at = std::lower_bound(m_texts.begin(), m_texts.end(), wanted,
                                     [](std::string_view a, std::string_view b) { return FirstForm(a) < b; });
    if (wanted.empty() || at == m_texts.end() || FirstForm(*at) != wanted) // the empty text has the file's own facts
        return nullptr;
    std::string_view const forms = m_translations[static_cast<std::size_t>(at - m_texts.begin())];
    std::size_t const second = forms.find('\0');
    std::size_t const form = count == 1 || second == std::string_view::npos ? 0 : second + 1;
    char const *const found = forms.data() + form;
    return *found == '\0' ? nullptr : found;
}

std::vector<DString> UserLanguages(std::function<char const *(char const *name)> const &variable) {
    auto const value = [&variable](char const *name) {
        char const *const found = variable(name);
        return DString(found == nullptr ? "" : found);
    };
    DString locale;
    for (char const *name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (locale.empty())
            locale = value(name);
    locale.resize(std::min(locale.find_first_of(".@"), locale.size()));
    if (locale.empty() || locale == "C" || locale == "POSIX")
        return {};
    std::vector<DString> languages;
    DString const chosen = value("LANGUAGE");
    for (DString language : Split(chosen.empty() ? locale : chosen, ':')) {
        language.resize(std::min(language.find_first_of(".@"), language.size()));
        DString const general = language.substr(0, language.find('_'));
        if (general == "en" || general == "C")
            break; // which needs no catalogue, and what follows is wanted less
        if (general.empty() || language.find('/') != DString::npos)
            continue;
        languages.push_back(language);
        if (general != language)
            languages.push_back(general);
    }
    return languages;
}

DString PseudoText(std::string_view text) {
    constexpr std::string_view kLonger = "~ o ~ e ~ u ";
    DString longer(text);
    std::size_t const wanted = text.size() + (text.size() * 2 + 4) / 5;
    for (std::size_t i = 0; longer.size() < wanted; ++i)
        longer += kLonger[i % kLonger.size()];
    return "\u27E6" + longer + "\u27E7";
}

} // namespace zelvar
