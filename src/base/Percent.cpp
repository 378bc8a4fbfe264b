#include "zelvar/base/Percent.h"

#include "zelvar/base/Hex.h"

#include <optional>

namespace zelvar {

DString PercentDecoded(std::string_view text) {
    DString out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::optional<DString> const byte = text[i] == '%' ? HexDecode(text.substr(i + 1, 2)) : std::nullopt;
        if (!byte || byte->empty()) {
            out += text[i];
            continue;
        }
        out += *byte;
        i += 2;
    }
    return out;
}

DString PercentEncoded(std::string_view text, bool keepSlashes) {
    DString out;
    for (char const c : text) {
        bool const plain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           std::string_view("-._~").find(c) != DString::npos || (keepSlashes && c == '/');
        if (plain)
            out += c;
        else
            out += '%' + HexEncode({&c, 1});
    }
    return out;
}

} // namespace zelvar
