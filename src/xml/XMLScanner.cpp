#include "zelvar/xml/XMLScanner.h"

#include <algorithm>
#include <array>

namespace zelvar {

namespace {

using Token = XMLScanner::Token;

enum CharKind : std::uint8_t { kOther, kBlank, kNameInside, kNameStart };

/// Beyond ASCII every byte counts as a letter.
constexpr std::array<CharKind, 256> kKinds = [] {
    std::array<CharKind, 256> kinds{};
    for (std::size_t c = 0; c < kinds.size(); ++c) {
        bool const isLetter = c >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
        bool const isInside = (c >= '0' && c <= '9') || c == '-' || c == '.';
        bool const isBlank = c == ' ' || c == '\t' || c == '\n' || c == '\r';
        kinds[c] = isLetter ? kNameStart : isInside ? kNameInside : isBlank ? kBlank : kOther;
    }
    return kinds;
}();

CharKind KindAt(std::string_view text, std::size_t at) {
    return at < text.size() ? kKinds[static_cast<unsigned char>(text[at])] : kOther;
}

std::size_t SkipName(std::string_view text, std::size_t at) {
    while (KindAt(text, at) >= kNameInside)
        ++at;
    return at;
}

std::size_t SkipBlanks(std::string_view text, std::size_t at) {
    while (KindAt(text, at) == kBlank)
        ++at;
    return at;
}

bool IsAt(std::string_view text, std::size_t at, char c) { return at < text.size() && text[at] == c; }

bool StartsAt(std::string_view text, std::size_t at, std::string_view start) {
    return at <= text.size() && text.substr(at).starts_with(start);
}

constexpr std::size_t kNowhere = std::string_view::npos;

/// Behind the next `end` from `at` on, or nowhere.
std::size_t Behind(std::string_view text, std::size_t at, std::string_view end) {
    std::size_t const found = text.find(end, at);
    return found == kNowhere ? kNowhere : found + end.size();
}

/// Behind the "]]>" that ends a section "<![...", which may hold others; nowhere if it does not end.
std::size_t BehindSection(std::string_view text, std::size_t at) {
    int depth = 0;
    while (at < text.size()) {
        if (StartsAt(text, at, "<![")) {
            ++depth;
            at += 3;
        } else if (StartsAt(text, at, "]]>")) {
            at += 3;
            if (--depth == 0)
                return at;
        } else {
            ++at;
        }
    }
    return kNowhere;
}

/// Behind what begins at `at` in a document type: a quoted text, a comment, an instruction, a section.
std::size_t BehindPart(std::string_view text, std::size_t at) {
    if (text[at] == '"' || text[at] == '\'')
        return Behind(text, at + 1, text.substr(at, 1));
    if (StartsAt(text, at, "<!--"))
        return Behind(text, at + 4, "-->");
    if (StartsAt(text, at, "<?"))
        return Behind(text, at + 2, "?>");
    return StartsAt(text, at, "<![") ? BehindSection(text, at) : kNowhere;
}

} // namespace

std::string_view XmlNameAt(std::string_view xml) {
    return KindAt(xml, 0) == kNameStart ? xml.substr(0, SkipName(xml, 0)) : std::string_view();
}

bool IsXmlBlank(std::string_view text) { return SkipBlanks(text, 0) == text.size(); }

bool XMLAttributeScanner::Next() {
    std::size_t const name = SkipBlanks(m_rest, 0);
    if (name == 0 || KindAt(m_rest, name) != kNameStart)
        return false;
    std::size_t const nameEnd = SkipName(m_rest, name);
    std::size_t at = SkipBlanks(m_rest, nameEnd);
    if (!IsAt(m_rest, at, '='))
        return false;
    at = SkipBlanks(m_rest, at + 1);
    if (!IsAt(m_rest, at, '"') && !IsAt(m_rest, at, '\''))
        return false;
    std::size_t const end = m_rest.find(m_rest[at], at + 1);
    if (end == kNowhere)
        return false;
    m_name = m_rest.substr(name, nameEnd - name);
    m_raw = m_rest.substr(at + 1, end - at - 1);
    m_rest.remove_prefix(end + 1);
    return true;
}

Token XMLScanner::Next() {
    m_begin = m_at;
    if (m_at >= m_xml.size())
        return Token::End;
    if (m_xml[m_at] != '<') {
        std::size_t const end = std::min(m_xml.find('<', m_at), m_xml.size());
        return Found(Token::Text, m_at, end, end);
    }
    if (KindAt(m_xml, m_at + 1) == kNameStart)
        return OpenTag();
    if (IsAt(m_xml, m_at + 1, '/'))
        return CloseTag();
    if (IsAt(m_xml, m_at + 1, '?'))
        return Question();
    if (IsAt(m_xml, m_at + 1, '!'))
        return Exclamation();
    return Break("no tag begins like this");
}

Token XMLScanner::Break(char const *reason) {
    m_reason = reason;
    return Token::Broken;
}

Token XMLScanner::Found(Token token, std::size_t rawBegin, std::size_t rawEnd, std::size_t end) {
    m_raw = m_xml.substr(rawBegin, rawEnd - rawBegin);
    m_at = end;
    return token;
}

Token XMLScanner::OpenTag() {
    std::size_t const nameEnd = SkipName(m_xml, m_at + 1);
    m_name = m_xml.substr(m_at + 1, nameEnd - m_at - 1);
    std::size_t at = nameEnd;
    if (KindAt(m_xml, at) == kBlank) {
        XMLAttributeScanner attributes(m_xml.substr(nameEnd));
        while (attributes.Next()) {
        }
        at = SkipBlanks(m_xml, m_xml.size() - attributes.Rest().size());
        if (KindAt(m_xml, at) == kNameStart)
            return Break("a broken attribute");
    }
    if (IsAt(m_xml, at, '>'))
        return Found(Token::Open, nameEnd, at, at + 1);
    return IsAt(m_xml, at, '/') && IsAt(m_xml, at + 1, '>') ? Found(Token::Empty, nameEnd, at, at + 2)
                                                            : Break("a broken start tag");
}

Token XMLScanner::CloseTag() {
    std::size_t const nameEnd = SkipName(m_xml, m_at + 2);
    m_name = m_xml.substr(m_at + 2, nameEnd - m_at - 2);
    std::size_t const at = SkipBlanks(m_xml, nameEnd);
    return IsAt(m_xml, at, '>') ? Found(Token::Close, at, at, at + 1) : Break("a broken end tag");
}

Token XMLScanner::Question() {
    constexpr std::string_view end = "?>";
    m_name = XmlNameAt(m_xml.substr(m_at + 2));
    if (m_name.empty())
        return Break("a broken instruction");
    std::size_t at = m_at + 2 + m_name.size();
    bool const isDeclaration = m_name.size() == 3 && EqualNoCase(m_name, "xml");
    if (!isDeclaration && !StartsAt(m_xml, at, end)) {
        if (KindAt(m_xml, at) != kBlank)
            return Break("a broken instruction");
        at = SkipBlanks(m_xml, at);
    }
    std::size_t const found = m_xml.find(end, at);
    if (found == kNowhere)
        return Break("an instruction without an end");
    return Found(isDeclaration ? Token::Declaration : Token::Instruction, at, found, found + end.size());
}

Token XMLScanner::Exclamation() {
    struct Section {
        Token token;
        std::string_view begin;
        std::string_view end;
        char const *broken;
    };
    constexpr std::array sections{
        Section{Token::Comment, "<!--", "-->", "a comment without an end"},
        Section{Token::CData, "<![CDATA[", "]]>", "a section of text without an end"},
    };
    for (Section const &section : sections) {
        if (!StartsAt(m_xml, m_at, section.begin))
            continue;
        std::size_t const content = m_at + section.begin.size();
        std::size_t const end = Behind(m_xml, content, section.end);
        return end == kNowhere ? Break(section.broken) : Found(section.token, content, end - section.end.size(), end);
    }
    return StartsAt(m_xml, m_at, "<!DOCTYPE") ? DocType() : Break("no tag begins like this");
}

Token XMLScanner::DocType() {
    std::size_t at = m_at + 2;
    int depth = 0;
    while (at < m_xml.size()) {
        char const c = m_xml[at];
        if (c == '<' && StartsAt(m_xml, at, "<!") && !StartsAt(m_xml, at, "<!-") && !StartsAt(m_xml, at, "<![")) {
            ++depth;
            at += 2;
        } else if (c == '<' || c == '"' || c == '\'') {
            at = BehindPart(m_xml, at);
        } else if (c == '>' && depth == 0) {
            return Found(Token::DocType, SkipBlanks(m_xml, m_at + std::string_view("<!DOCTYPE").size()), at, at + 1);
        } else {
            depth -= c == '>' ? 1 : 0;
            ++at;
        }
    }
    return Break("a broken document type");
}

} // namespace zelvar
