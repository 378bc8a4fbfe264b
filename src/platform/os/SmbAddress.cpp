#include "zelvar/platform/os/SmbAddress.h"

#include "zelvar/base/Hex.h"
#include "zelvar/base/TypedSecrets.h"

namespace zelvar::platform {

namespace {

constexpr std::string_view kScheme = "smb://";

std::optional<DString> Unescaped(std::string_view text) {
    DString plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i];
            continue;
        }
        std::optional<DString> const byte = HexDecode(text.substr(i + 1, 2));
        if (!byte || byte->empty() || byte->front() == '\0')
            return std::nullopt;
        plain += *byte;
        i += 2;
    }
    return plain;
}

} // namespace

bool IsSmbAddress(std::string_view text) { return StartsWithNoCase(text, kScheme); }

std::optional<SmbAddress> ParseSmbAddress(std::string_view text) {
    if (!IsSmbAddress(text))
        return std::nullopt;
    DString const shown = TakeSecrets(DString(text));
    std::vector<DString> const pieces = Split(std::string_view(shown).substr(kScheme.size()), '/');
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
    DString escaped;
    for (char const c : part) {
        auto const byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || kSpecial.find(c) != std::string_view::npos) {
            escaped += '%' + HexEncode({&c, 1});
        } else {
            escaped += c;
        }
    }
    return escaped;
}

} // namespace zelvar::platform
