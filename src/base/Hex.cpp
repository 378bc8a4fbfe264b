#include "zelvar/base/Hex.h"

namespace zelvar {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

/// 16 for what is no digit.
unsigned DigitOf(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A') + 10;
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a') + 10;
    return 16;
}

} // namespace

DString HexEncode(std::string_view bytes) {
    DString text(2 * bytes.size(), '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        auto const byte = static_cast<unsigned char>(bytes[i]);
        text[2 * i] = kDigits[byte >> 4U];
        text[2 * i + 1] = kDigits[byte & 0xFU];
    }
    return text;
}

std::optional<DString> HexDecode(std::string_view text) {
    if (text.size() % 2 != 0)
        return std::nullopt;
    DString bytes(text.size() / 2, '\0');
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned const high = DigitOf(text[i]);
        unsigned const low = DigitOf(text[i + 1]);
        if (high > 15 || low > 15)
            return std::nullopt;
        bytes[i / 2] = static_cast<char>(high << 4U | low);
    }
    return bytes;
}

} // namespace zelvar
