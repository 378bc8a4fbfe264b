#include "zelvar/platform/os/SmbAddress.h"

namespace zelvar::platform {

namespace {

constexpr std::string_view kScheme = "smb://";

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::optional<DString> Unescaped(std::string_view text) {
    DString plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i];
            continue;
        }
        int const high = i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
        int const low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0 || high + low == 0)
            return std::nullopt;
        plain += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return plain;
}

} // namespace

bool IsSmbAddress(std::string_view text) { return StartsWithNoCase(text, kScheme); }

std::optional<SmbAddress> ParseSmbAddress(std::string_view text) {
    if (!IsSmbAddress(text))
        return std::nullopt;
    std::vector<DString> const pieces = Split(text.substr(kScheme.size()), '/');
    SmbAddress address;
    address.authority = pieces.front();
    if (address.authority.empty())
        return std::nullopt;
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (pieces[i].empty())
            continue;
        std::optional<DString> part = Unescaped(pieces[i]);
        if (!part || *part == "." || *part == ".." || part->find('/') != DString::npos)
            return std::nullopt;
        address.parts.push_back(*std::move(part));
    }
    return address;
}

DString EscapedSmbPart(std::string_view part) {
    constexpr std::string_view kSpecial = "%?#\"<>\\^`{|} ";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    DString escaped;
    for (char const c : part) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || kSpecial.find(c) != std::string_view::npos) {
            escaped += '%';
            escaped += kDigits[byte >> 4U];
            escaped += kDigits[byte & 0xFU];
        } else {
            escaped += c;
        }
    }
    return escaped;
}

} // namespace zelvar::platform
