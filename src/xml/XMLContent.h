#pragma once

#include "zelvar/xml/XMLDocument.h"
#include "zelvar/xml/XMLScanner.h"

namespace zelvar {

/// Walks over what stands directly in an element of a loaded document: its texts, children, comments. Blanks between
/// elements are passed over, unless they are all that the element holds.
class XMLContent {
public:
    XMLContent(XMLDocument const &document, std::uint32_t element);

    /// False at the end.
    bool Next();
    [[nodiscard]] XMLPiece::Kind GetKind() const { return m_kind; }
    [[nodiscard]] bool IsElement() const { return m_kind == XMLPiece::Kind::Element; }
    [[nodiscard]] bool IsText() const { return m_kind == XMLPiece::Kind::Text || m_kind == XMLPiece::Kind::CData; }
    /// The text, or what a comment or the like holds; for an element its name.
    [[nodiscard]] DString Text() const;
    /// The child.
    [[nodiscard]] std::uint32_t Element() const { return static_cast<std::uint32_t>(m_scanner.Begin()); }
    [[nodiscard]] std::string_view Name() const { return m_scanner.Name(); }
    [[nodiscard]] XMLDocument const &Document() const { return *m_document; }
    /// What is in the child.
    [[nodiscard]] XMLContent InChild() const;
    /// Goes on behind the child, of which `done` has seen the end.
    void GoBehind(XMLContent const &done);

private:
    void SkipChild();

    XMLDocument const *m_document;
    XMLScanner m_scanner;
    XMLPiece::Kind m_kind = XMLPiece::Kind::Text;
    bool m_isOver = false;
    bool m_isInChild = false; ///< the walk stands behind its start tag
    bool m_hasBegun = false;  ///< something has been found
};

/// The content of a token that is no element, as `XMLPiece` keeps it; nothing for a declaration.
[[nodiscard]] std::optional<XMLPiece::Kind> XmlKindOf(XMLScanner::Token token);
[[nodiscard]] DString XmlContentOf(XMLScanner const &scanner, XMLPiece::Kind kind);

} // namespace zelvar
