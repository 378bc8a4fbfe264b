#include "zelvar/base/ByteEscapes.h"

#include <algorithm>
#include <optional>

namespace zelvar {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::size_t kLength = 4; // of an escape

/// The byte that an escape at the beginning of the text stands for.
std::optional<char> EscapedByte(std::string_view text) {
    if (text.size() < kLength || !text.starts_with("\\x"))
        return std::nullopt;
    auto const value = [](char c) { return kDigits.find(c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c); };
    std::size_t const high = value(text[2]);
    std::size_t const low = value(text[3]);
    if (high == std::string_view::npos || low == std::string_view::npos || high + low == 0)
        return std::nullopt;
    return static_cast<char>(high * kDigits.size() + low);
}

void PutEscape(DString &out, char c) {
    auto const byte = static_cast<unsigned char>(c);
    out.append("\\x").append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 0xFU]);
}

/// Writes `isPlain` bytes as they are.
template <class IsPlain>
DString Escape(std::string_view text, IsPlain &&isPlain) {
    DString escaped;
    escaped.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at)
        if (isPlain(at) && !EscapedByte(text.substr(at)))
            escaped += text[at];
        else
            PutEscape(escaped, text[at]);
    return escaped;
}

} // namespace

DString EscapeControlBytes(std::string_view text) {
    auto const isPlain = [](char c) {
        auto const byte = static_cast<unsigned char>(c);
        return byte >= 0x20 && byte != 0x7F;
    };
    // Nearly every text.
    if (std::all_of(text.begin(), text.end(), [&](char c) { return isPlain(c) && c != '\\'; }))
        return DString(text);
    return Escape(text, [&](std::size_t at) { return isPlain(text[at]); });
}

DString EscapeToUtf8(std::string_view bytes) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    DString const valid = ToValidUtf8(bytes);
    if (valid == bytes)
        return valid;
    // Both texts run together: where they differ, a byte was replaced.
    DString escaped;
    std::size_t at = 0;
    for (std::size_t in = 0; in < valid.size(); ++at) {
        bool const isReplaced = valid.compare(in, replacement.size(), replacement) == 0 &&
                                bytes.substr(at, replacement.size()) != replacement;
        if (isReplaced || EscapedByte(bytes.substr(at)))
            PutEscape(escaped, bytes[at]);
        else
            escaped += bytes[at];
        in += isReplaced ? replacement.size() : 1;
    }
    return escaped;
}

DString UnescapeBytes(std::string_view text) {
    DString bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        std::optional<char> const byte = EscapedByte(text.substr(at));
        bytes += byte.value_or(text[at]);
        at += byte ? kLength : 1;
    }
    return bytes;
}

} // namespace zelvar
