#pragma once

#include "zelvar/base/XMLNode.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace zelvar {

struct XMLAttribute {
    DString name{};
    DString value{};
};

/// One thing in an XML document: an element, or what stands between elements and is carried through unchanged.
///
/// An element's piece is owned by its `XMLNode`, which a parent owns by the list of its children; all others are owned
/// by the list that they stand in.
struct XMLPiece {
    enum class Kind : std::uint8_t { Element, Text, CData, Comment, Instruction, DocType };

    /// What stands before and behind a root in its file. Of one kind a text each; no elements.
    struct Outside {
        std::vector<std::pair<Kind, DString>> prolog{};
        std::vector<std::pair<Kind, DString>> epilog{};
    };

    XMLPiece(Kind of, DString content) : kind(of), text(std::move(content)) {}
    XMLPiece(XMLPiece const &) = delete;
    XMLPiece &operator=(XMLPiece const &) = delete;
    /// Deletes all pieces below.
    ~XMLPiece();

    [[nodiscard]] static XMLPiece &Of(XMLNode &node) { return *node.m_piece; }
    [[nodiscard]] static XMLPiece const &Of(XMLNode const &node) { return *node.m_piece; }

    [[nodiscard]] bool IsElement() const { return kind == Kind::Element; }
    [[nodiscard]] bool IsText() const { return kind == Kind::Text || kind == Kind::CData; }
    [[nodiscard]] XMLPiece const *Top() const;
    [[nodiscard]] XMLAttribute *FindAttribute(char const *name);

    /// Puts a piece without parent among the children, before `position` or at the end.
    void Link(XMLPiece &child, XMLPiece *position = nullptr);
    /// Takes the piece out of its parent, without deleting it.
    void Unlink();
    /// Deletes a piece with all below it; that of an element with its node.
    static void Delete(XMLPiece *piece);
    /// Appends a new one.
    XMLPiece &Append(Kind of, DString content);
    /// Appends a copy of `other` alone, without its children.
    XMLPiece &AppendCopy(XMLPiece const &other);
    /// Moves everything but the place in the tree from `other`, a root, to this one; what was here is deleted.
    void TakeContent(XMLPiece &other);

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
};

} // namespace zelvar
