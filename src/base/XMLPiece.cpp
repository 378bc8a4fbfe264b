#include "zelvar/base/XMLPiece.h"

#include <utility>

namespace zelvar {

XMLPiece::~XMLPiece() {
    // From the leaves up, step by step: trees built by a program may be deeper than the stack.
    XMLPiece *piece = this;
    for (;;) {
        while (piece->last != nullptr)
            piece = piece->last;
        if (piece == this)
            return;
        XMLPiece *const above = piece->parent;
        Delete(piece);
        piece = above;
    }
}

XMLPiece const *XMLPiece::Top() const {
    XMLPiece const *piece = this;
    while (piece->parent != nullptr)
        piece = piece->parent;
    return piece;
}

XMLAttribute *XMLPiece::FindAttribute(char const *name) {
    for (XMLAttribute &attribute : attributes) {
        if (name != nullptr && attribute.name == name)
            return &attribute;
    }
    return nullptr;
}

void XMLPiece::Link(XMLPiece &child, XMLPiece *position) {
    child.parent = this;
    child.next = position;
    child.previous = position == nullptr ? last : position->previous;
    (child.previous == nullptr ? first : child.previous->next) = &child;
    (position == nullptr ? last : position->previous) = &child;
}

void XMLPiece::Unlink() {
    if (parent == nullptr)
        return;
    (previous == nullptr ? parent->first : previous->next) = next;
    (next == nullptr ? parent->last : next->previous) = previous;
    parent = previous = next = nullptr;
}

void XMLPiece::Delete(XMLPiece *piece) {
    piece->Unlink();
    if (piece->IsElement())
        delete piece->node; // which owns the piece
    else
        delete piece;
}

XMLPiece &XMLPiece::Append(Kind of, DString content) {
    XMLPiece *piece = nullptr;
    if (of == Kind::Element) {
        piece = std::make_unique<XMLNode>().release()->m_piece.get(); // the children own it from here
        piece->text = std::move(content);
    } else {
        piece = std::make_unique<XMLPiece>(of, std::move(content)).release();
    }
    Link(*piece);
    return *piece;
}

XMLPiece &XMLPiece::AppendCopy(XMLPiece const &other) {
    XMLPiece &copy = Append(other.kind, other.text);
    copy.attributes = other.attributes;
    return copy;
}

void XMLPiece::TakeContent(XMLPiece &other) {
    while (last != nullptr)
        Delete(last);
    text = std::move(other.text);
    attributes = std::move(other.attributes);
    outside = std::move(other.outside);
    first = std::exchange(other.first, nullptr);
    last = std::exchange(other.last, nullptr);
    for (XMLPiece *child = first; child != nullptr; child = child->next)
        child->parent = this;
}

} // namespace zelvar
