#include "zelvar/xml/XMLContent.h"

#include "zelvar/xml/XMLText.h"

namespace zelvar {

namespace {

using Kind = XMLPiece::Kind;
using Token = XMLScanner::Token;

} // namespace

std::optional<Kind> XmlKindOf(Token token) {
    switch (token) {
    case Token::Text:
        return Kind::Text;
    case Token::CData:
        return Kind::CData;
    case Token::Comment:
        return Kind::Comment;
    case Token::Instruction:
        return Kind::Instruction;
    case Token::DocType:
        return Kind::DocType;
    case Token::Open:
    case Token::Empty:
        return Kind::Element;
    default:
        return std::nullopt;
    }
}

DString XmlContentOf(XMLScanner const &scanner, Kind kind) {
    switch (kind) {
    case Kind::Element:
        return DString(scanner.Name());
    case Kind::Text:
        return XmlTextOf(scanner.Raw());
    case Kind::Instruction: // kept as "target content"
        return DString(scanner.Name()).append(" ").append(scanner.Raw());
    case Kind::DocType:
        return DString(scanner.Raw());
    default:
        return XmlPlainOf(scanner.Raw());
    }
}

XMLContent::XMLContent(XMLDocument const &document, std::uint32_t element)
    : m_document(&document), m_scanner(document.Text(), element) {
    m_isOver = m_scanner.Next() != Token::Open;
}

bool XMLContent::Next() {
    if (m_isInChild)
        SkipChild();
    while (!m_isOver) {
        Token const token = m_scanner.Next();
        std::optional<Kind> const kind = XmlKindOf(token);
        m_isOver = token == Token::Close || token == Token::End || token == Token::Broken;
        if (!kind)
            continue;
        bool const isBlank = *kind == Kind::Text && IsXmlBlank(m_scanner.Raw());
        if (isBlank && (m_hasBegun || !m_scanner.IsBeforeClose()))
            continue;
        m_kind = *kind;
        m_isInChild = token == Token::Open;
        m_hasBegun = true;
        return true;
    }
    return false;
}

XMLContent XMLContent::InChild() const {
    XMLContent child = *this;
    child.m_isOver = !m_isInChild; // one without an end tag
    child.m_isInChild = child.m_hasBegun = false;
    return child;
}

void XMLContent::GoBehind(XMLContent const &done) {
    m_scanner.MoveTo(done.m_scanner.At());
    m_isInChild = false;
}

void XMLContent::SkipChild() {
    std::uint32_t const child = Element();
    for (Token token = Token::Open; token != Token::Close && token != Token::End && token != Token::Broken;) {
        token = m_scanner.Next();
        if (token == Token::Open || token == Token::Empty) {
            m_scanner.MoveTo(m_document->EndOf(child));
            break;
        }
    }
    m_isInChild = false;
}

DString XMLContent::Text() const { return XmlContentOf(m_scanner, m_kind); }

} // namespace zelvar
