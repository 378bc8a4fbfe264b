#pragma once

#include <string_view>

namespace zelvar {

/// One character of UTF-8 text with its case taken away.
struct FoldedChar {
    unsigned char bytes[4]{};
    unsigned char length =
        0; ///< bytes of `bytes` in use, the same number as the character takes in the text; 0 at the end
};

/// The character at the start of `text` in upper case: ASCII and the simple case pairs of Latin, Greek and Cyrillic,
/// all of which keep their number of bytes. A byte that begins no valid character is a character of its own.
[[nodiscard]] FoldedChar FoldFirst(std::string_view text);

/// Bytes of the valid UTF-8 character at the start of `text`; 0 if there is none.
[[nodiscard]] unsigned Utf8Length(std::string_view text);

/// ASCII only.
[[nodiscard]] constexpr unsigned char UpperAscii(unsigned char c) {
    return c >= 'a' && c <= 'z' ? static_cast<unsigned char>(c - 32) : c;
}

} // namespace zelvar
