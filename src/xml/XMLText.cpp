#include "zelvar/xml/XMLText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

namespace zelvar {

namespace {

constexpr std::string_view kNumber = "&#";

/// The number in `digits`, which is what follows "&#", and how long it is with its ";". Counted in 32 bits: one too
/// large for them becomes another one.
struct Numbered {
    std::uint32_t code = 0;
    std::size_t length = 0;
};
std::optional<Numbered> NumberIn(std::string_view digits) {
    bool const isHexadecimal = digits.starts_with('x');
    std::size_t const first = isHexadecimal ? 1 : 0;
    std::uint32_t code = 0;
    for (std::size_t i = first; i < digits.size(); ++i) {
        char const c = digits[i];
        char const lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        if (c >= '0' && c <= '9')
            code = code * (isHexadecimal ? 16 : 10) + static_cast<std::uint32_t>(c - '0');
        else if (isHexadecimal && lower >= 'a' && lower <= 'f')
            code = code * 16 + static_cast<std::uint32_t>(lower - 'a' + 10);
        else if (c == ';' && i > first)
            return Numbered{.code = code, .length = i + 1};
        else
            break;
    }
    return std::nullopt;
}

void PutUtf8(DString &out, std::uint32_t code) {
    auto const put = [&out](std::uint32_t byte) { out += static_cast<char>(byte & 0xFFU); };
    auto const putRest = [&](int shift) { put(0x80U | (code >> static_cast<unsigned>(shift) & 0x3FU)); };
    if (code < 0x80U) {
        put(code);
        return;
    }
    if (code < 0x800U) {
        put(0xC0U | code >> 6U);
    } else {
        if (code < 0x10000U) {
            put(0xE0U | code >> 12U);
        } else {
            put(0xF0U | code >> 18U);
            putRest(12);
        }
        putRest(6);
    }
    putRest(0);
}

/// Puts what the reference at the start of `text` stands for, and gives its length; "&" alone if it is none.
std::size_t PutReference(DString &out, std::string_view text) {
    constexpr std::array<std::pair<std::string_view, char>, 5> named{
        {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
    for (auto const &[name, character] : named) {
        if (text.starts_with(name)) {
            out += character;
            return name.size();
        }
    }
    if (text.starts_with(kNumber)) {
        if (auto const number = NumberIn(text.substr(kNumber.size()))) {
            PutUtf8(out, number->code);
            return kNumber.size() + number->length;
        }
    }
    out += '&';
    return 1;
}

/// `changed` are the characters that do not stand for themselves.
DString Decoded(std::string_view raw, std::string_view changed, char lineEnd) {
    auto const isChanged = [changed](char c) {
        return (c == '&' || (static_cast<unsigned char>(c) < ' ')) && changed.find(c) != std::string_view::npos;
    };
    DString out;
    out.reserve(raw.size());
    for (;;) {
        auto const *const at = std::find_if(raw.begin(), raw.end(), isChanged);
        out.append(raw.begin(), at);
        raw.remove_prefix(static_cast<std::size_t>(at - raw.begin()));
        if (raw.empty())
            return out;
        if (raw.front() == '&') {
            raw.remove_prefix(PutReference(out, raw));
        } else {
            raw.remove_prefix(raw.starts_with("\r\n") ? 2 : 1);
            out += lineEnd;
        }
    }
}

} // namespace

bool HoldsNul(std::string_view xml) {
    if (xml.find('\0') != std::string_view::npos)
        return true;
    for (std::size_t at = xml.find('&'); at != std::string_view::npos; at = xml.find('&', at + 1)) {
        if (!xml.substr(at).starts_with(kNumber))
            continue;
        auto const number = NumberIn(xml.substr(at + kNumber.size()));
        if (number && number->code == 0)
            return true;
    }
    return false;
}

DString XmlTextOf(std::string_view raw) { return Decoded(raw, "&\r", '\n'); }
DString XmlValueOf(std::string_view raw) { return Decoded(raw, "&\r\n\t", ' '); }
DString XmlPlainOf(std::string_view raw) { return Decoded(raw, "\r", '\n'); }

} // namespace zelvar
