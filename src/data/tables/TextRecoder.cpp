#include "zelvar/data/tables/TextRecoder.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace zelvar {

std::unique_ptr<TextRecoder> TextRecoder::Create(DString const &encoding) {
    iconv_t converter = iconv_open("UTF-8", encoding.c_str());
    if (reinterpret_cast<std::intptr_t>(converter) == -1)
        return nullptr;
    bool const keepsAscii = StartsWithNoCase(encoding, "CP125") || StartsWithNoCase(encoding, "ISO-8859");
    return std::unique_ptr<TextRecoder>(new TextRecoder(converter, keepsAscii));
}

TextRecoder::~TextRecoder() { iconv_close(m_converter); }

DString TextRecoder::ToUtf8(DString text) {
    if (m_keepsAscii && std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; }))
        return text;
    DString out;
    std::array<char, 1024> room{};
    char *in = text.data();
    std::size_t left = text.size();
    std::ignore = iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
    while (left > 0) {
        char *end = room.data();
        std::size_t free = room.size();
        bool const failed = iconv(m_converter, &in, &left, &end, &free) == static_cast<std::size_t>(-1);
        int const reason = errno;
        out.append(room.data(), end);
        if (!failed || reason == E2BIG)
            continue;
        out += "\xEF\xBF\xBD"; // for a byte that means nothing, or half a character at the end
        ++in;
        --left;
    }
    return out;
}

} // namespace zelvar
