#include "zelvar/xml/XMLEncoding.h"

#include "zelvar/base/CaseFolding.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <iconv.h>

namespace zelvar {

namespace {

struct Start {
    std::string_view bytes;
    char const *encoding = nullptr;
};
using namespace std::string_view_literals;
// The longer ones first. Without a mark of its byte order a document still begins with "<".
constexpr std::array kStarts{
    Start{"\0\0\xFE\xFF"sv, "UTF-32BE"}, Start{"\xFF\xFE\0\0"sv, "UTF-32LE"}, Start{"\0\0\0<"sv, "UTF-32BE"},
    Start{"<\0\0\0"sv, "UTF-32LE"},      Start{"\xFE\xFF"sv, "UTF-16BE"},     Start{"\xFF\xFE"sv, "UTF-16LE"},
    Start{"\0<"sv, "UTF-16BE"},          Start{"<\0"sv, "UTF-16LE"},
};

/// What stands behind "encoding=" in the declaration, in capital letters.
DString Declared(std::string_view xml) {
    if (!xml.starts_with("<?xml"))
        return {};
    std::string_view rest = xml.substr(0, xml.find("?>"));
    constexpr std::string_view word = "encoding";
    std::size_t const at = rest.find(word);
    if (at == std::string_view::npos)
        return {};
    rest = Trimmed(rest.substr(at + word.size()));
    if (!rest.starts_with('='))
        return {};
    rest = Trimmed(rest.substr(1));
    if (rest.empty() || (rest.front() != '"' && rest.front() != '\''))
        return {};
    DString name(rest.substr(1, rest.find(rest.front(), 1) - 1));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return name;
}

/// Encodings of one byte a character that agree with ASCII. Others are not handed to a converter: a document may come
/// from anywhere.
bool IsOfSingleBytes(std::string_view name) {
    return name.starts_with("ISO-8859-") || name.starts_with("WINDOWS-125") || name.starts_with("CP125") ||
           name == "LATIN1" || name == "KOI8-R" || name == "KOI8-U";
}

/// The system's converter, closed at the end.
class Converter {
public:
    explicit Converter(DString const &encoding) : m_handle(iconv_open("UTF-8", encoding.c_str())) {}
    ~Converter() {
        if (IsOpen())
            iconv_close(m_handle);
    }
    Converter(Converter const &) = delete;
    Converter &operator=(Converter const &) = delete;

    [[nodiscard]] bool IsOpen() const { return reinterpret_cast<std::intptr_t>(m_handle) != -1; }
    /// Moves both along by what is done. False, and `errno` set, at the first byte that cannot be taken or has no room.
    bool Run(std::string_view &in, char *&out, std::size_t &room) {
        char *from = const_cast<char *>(in.data()); // which it does not write to
        std::size_t left = in.size();
        bool const done = iconv(m_handle, &from, &left, &out, &room) != static_cast<std::size_t>(-1);
        in = in.substr(in.size() - left);
        return done;
    }

private:
    iconv_t m_handle;
};

/// Whether the text begins with eight characters of ASCII that are no control characters.
bool AreEightPlain(std::string_view text) {
    std::uint64_t word = 0;
    if (text.size() < sizeof word)
        return false;
    std::memcpy(&word, text.data(), sizeof word);
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    constexpr std::uint64_t blanks = 0x2020202020202020U;
    return ((word | (word - blanks)) & highBits) == 0; // a byte below a blank borrows from the bits above it
}

} // namespace

DString EncodingOfXml(std::string_view xml) {
    for (Start const &start : kStarts)
        if (xml.starts_with(start.bytes))
            return start.encoding;
    DString name = Declared(xml);
    return IsOfSingleBytes(name) ? name : DString();
}

std::optional<DString> RecodedXml(std::string_view xml, DString const &encoding, std::size_t limit, DString &reason) {
    Converter converter(encoding);
    if (!converter.IsOpen()) {
        reason = "is written in " + encoding + ", which is not read here";
        return std::nullopt;
    }
    // In two rounds, so that no byte more is taken than is needed.
    std::array<char, 4096> scratch{};
    std::size_t size = 0;
    for (std::string_view rest = xml; !rest.empty();) {
        char *out = scratch.data();
        std::size_t room = scratch.size();
        bool const done = converter.Run(rest, out, room);
        if (!done && errno != E2BIG) {
            reason = "is not what its encoding allows: " + encoding;
            return std::nullopt;
        }
        size += scratch.size() - room;
    }
    if (size > limit) {
        reason = "is too large";
        return std::nullopt;
    }
    DString recoded(size, '\0');
    char *out = recoded.data();
    converter.Run(xml, out, size);
    return recoded;
}

bool IsXmlText(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        if (AreEightPlain(text.substr(at))) {
            at += 8;
            continue;
        }
        auto const c = static_cast<unsigned char>(text[at]);
        if (c < 0x80) {
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                return false;
            ++at;
            continue;
        }
        std::string_view const rest = text.substr(at);
        unsigned const length = Utf8Length(rest);
        if (length == 0 || rest.starts_with("\xEF\xBF\xBE") || rest.starts_with("\xEF\xBF\xBF"))
            return false;
        at += length;
    }
    return true;
}

} // namespace zelvar
