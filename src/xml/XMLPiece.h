#pragma once

#include "zelvar/xml/XMLNode.h"

#include <cstdint>
#include <vector>

namespace zelvar {

class XMLDocument;

struct XMLAttribute {
    DString name{};
    DString value{};
};

/// One thing in an XML tree: an element, or what stands between elements and is carried through unchanged.
///
/// An element's piece is owned by its `XMLNode`, which a parent owns by the list of its children; all others are owned
/// by the list that they stand in. Roots have pieces, and what a program made or changed, with its brothers and all
/// above; other elements are places in the text of their document.
struct XMLPiece {
    enum class Kind : std::uint8_t { Element, Text, CData, Comment, Instruction, DocType };

    /// What stands before and behind a root in its file, as it is written there; no elements.
    struct Outside {
        DString before{};
        DString behind{};
    };

    XMLPiece(Kind of, DString content) : kind(of), text(std::move(content)) {}
    XMLPiece(XMLPiece const &) = delete;
    XMLPiece &operator=(XMLPiece const &) = delete;
    /// Deletes all pieces below.
    ~XMLPiece();

    /// The piece of a node, or null for one that is but a place in its document.
    [[nodiscard]] static XMLPiece *IfAny(XMLNode const &node);
    /// The piece of a node, made if there is none yet, to change its name and attributes.
    [[nodiscard]] static XMLPiece &Of(XMLNode &node);
    /// The same, to change what is in it: all children have pieces.
    [[nodiscard]] static XMLPiece &WithContent(XMLNode &node);

    /// Name of an element, wherever it stands.
    [[nodiscard]] DString GetName() const;
    [[nodiscard]] std::vector<XMLAttribute> GetAttributes() const;
    [[nodiscard]] bool IsElement() const { return kind == Kind::Element; }
    [[nodiscard]] bool IsText() const { return kind == Kind::Text || kind == Kind::CData; }
    [[nodiscard]] XMLAttribute *FindAttribute(char const *name);

    /// Puts a piece without parent among the children, before `position` or at the end.
    void Link(XMLPiece &child, XMLPiece *position = nullptr);
    /// Takes the piece out of its parent, without deleting it.
    void Unlink();
    /// Deletes a piece with all below it; that of an element with its node.
    static void Delete(XMLPiece *piece);
    /// Appends a new one.
    XMLPiece &Append(Kind of, DString content);
    /// Appends copies of all that is in `source`.
    void AppendContentOf(XMLPiece const &source);
    /// The same of an element of a document.
    void AppendContentOf(XMLDocument const &from, std::uint32_t element);
    /// Makes this root that of a document, which has been checked; what was here is deleted.
    void TakeDocument(std::shared_ptr<XMLDocument> loaded);
    /// Takes name and attributes out of the document, where they are still there.
    void TakeHead();
    /// The same of what is in the element, which becomes pieces.
    void TakeContent();
    /// The same for all below.
    void TakeAll();

    Kind kind;
    DString text; ///< name of an element, content of the others
    std::vector<XMLAttribute> attributes{};
    std::unique_ptr<Outside> outside{}; ///< of a root that was loaded, or null
    XMLNode *node = nullptr;            ///< of an element, else null
    XMLPiece *parent = nullptr;
    XMLPiece *previous = nullptr;
    XMLPiece *next = nullptr;
    XMLPiece *first = nullptr;
    XMLPiece *last = nullptr;

    std::shared_ptr<XMLDocument> document{}; ///< that the node was loaded from, or null
    std::uint32_t place = 0;                 ///< in the document
    std::uint32_t firstNode = 0;             ///< index of the first child in the document, as `XMLDocument` tells it
    bool hasHeadThere = false;               ///< name and attributes have not been taken out of the document yet
    bool hasContentThere = false;            ///< what is in the element, the same

private:
    [[nodiscard]] static XMLPiece &TakeNode(XMLNode &node, std::shared_ptr<XMLDocument> const &document);
};

} // namespace zelvar
