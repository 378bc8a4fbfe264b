#include "zelvar/data/tables/CsvEncoding.h"

#include "zelvar/data/tables/TableTexts.h"

#include <algorithm>

namespace zelvar {

namespace {

constexpr char const *kAssumed = "CP1252";

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsUtf8(std::string_view text) { return ToValidUtf8(text) == text; }

/// A text in another encoding seldom holds what reads as a character of UTF-8; where more is right than wrong, a few
/// bytes of it are damaged.
bool IsMostlyUtf8(std::string_view text) {
    DString const valid = ToValidUtf8(text);
    if (valid == text)
        return true;
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::ptrdiff_t wrong = 0;
    for (std::size_t at = valid.find(replacement); at != DString::npos; at = valid.find(replacement, at + 1))
        ++wrong;
    std::ptrdiff_t const all =
        std::count_if(valid.begin(), valid.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xC0; });
    return all - wrong > wrong;
}

/// Without a character that may go on behind the end.
std::string_view WholeCharacters(std::string_view text) {
    constexpr std::size_t longest = 4; // bytes of a character
    for (std::size_t cut = 0; cut < longest && !text.empty() && !IsAscii(text.substr(text.size() - 1)); ++cut)
        text.remove_suffix(1);
    return text;
}

} // namespace

CsvEncoding CsvEncoding::Guess(std::string_view head) {
    std::string_view const seen = head.size() < kHead ? head : WholeCharacters(head.substr(0, kHead));
    CsvEncoding encoding;
    bool const isOpen = IsAscii(seen);
    if (!isOpen && IsMostlyUtf8(seen))
        return encoding;
    encoding.m_recoder = TextRecoder::Create(kAssumed);
    encoding.m_isOpen = isOpen;
    encoding.m_name = isOpen ? "" : "windows-1252 (assumed)";
    return encoding;
}

CsvEncoding CsvEncoding::Stated(DString const &name) {
    CsvEncoding encoding;
    if (!EqualNoCase(name, "UTF-8"))
        encoding.m_recoder = TextRecoder::Create(name);
    return encoding;
}

void CsvEncoding::Append(DString &out, std::string_view text, std::size_t most) const {
    if (m_recoder == nullptr || IsAscii(text) || (m_isOpen && IsUtf8(text)))
        AppendText(out, text, most);
    else
        AppendText(out, m_recoder->ToUtf8(DString(text.substr(0, most))), most);
}

} // namespace zelvar
