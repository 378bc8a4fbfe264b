#include "zelvar/xml/XMLPiece.h"

#include "zelvar/xml/XMLContent.h"
#include "zelvar/xml/XMLDocument.h"

#include <tuple>
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

XMLPiece *XMLPiece::IfAny(XMLNode const &node) { return node.Piece(); }

XMLPiece &XMLPiece::Of(XMLNode &node) {
    if (node.Piece() == nullptr)
        std::ignore = WithContent(*node.GetParent());
    node.Piece()->TakeHead();
    return *node.Piece();
}

XMLPiece &XMLPiece::WithContent(XMLNode &node) {
    XMLPiece &piece = Of(node); // no deeper than documents are
    piece.TakeContent();
    return piece;
}

DString XMLPiece::GetName() const { return hasHeadThere ? DString(document->NameOf(place)) : text; }

std::vector<XMLAttribute> XMLPiece::GetAttributes() const {
    return hasHeadThere ? document->AttributesOf(place) : attributes;
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
    XMLPiece *const piece = of == Kind::Element ? std::make_unique<XMLNode>(content).release()->Piece()
                                                : std::make_unique<XMLPiece>(of, std::move(content)).release();
    Link(*piece); // the children own it from here
    return *piece;
}

void XMLPiece::AppendContentOf(XMLPiece const &source) {
    XMLPiece *target = this;
    XMLPiece const *at = &source;
    for (;;) {
        if (at->hasContentThere)
            target->AppendContentOf(*at->document, at->place);
        if (at->first != nullptr) {
            at = at->first;
        } else {
            while (at != &source && at->next == nullptr) {
                at = at->parent;
                target = target->parent;
            }
            if (at == &source)
                return;
            at = at->next;
            target = target->parent;
        }
        target = &target->Append(at->kind, at->IsElement() ? at->GetName() : at->text);
        target->attributes = at->GetAttributes();
    }
}

void XMLPiece::AppendContentOf(XMLDocument const &from, std::uint32_t element) {
    for (XMLContent content(from, element); content.Next();) {
        XMLPiece &piece = Append(content.GetKind(), content.Text());
        if (!content.IsElement())
            continue;
        piece.attributes = from.AttributesOf(content.Element());
        piece.AppendContentOf(from, content.Element());
    }
}

void XMLPiece::TakeDocument(std::shared_ptr<XMLDocument> loaded) {
    while (last != nullptr)
        Delete(last);
    document = std::move(loaded);
    document->SetTop(node);
    place = document->Root();
    firstNode = XMLDocument::kNotMade;
    hasContentThere = true;
    hasHeadThere = true;
    text.clear();
    attributes.clear();
    std::string_view const all = document->Text();
    DString const before(all.substr(0, place));
    DString const behind(all.substr(document->RootEnd()));
    outside = std::make_unique<Outside>(Outside{.before = before, .behind = behind});
}

XMLPiece &XMLPiece::TakeNode(XMLNode &node, std::shared_ptr<XMLDocument> const &document) {
    auto piece = std::make_unique<XMLPiece>(Kind::Element, DString());
    piece->document = document;
    piece->place = node.Place();
    piece->firstNode = node.m_links[1];
    piece->hasHeadThere = true;
    piece->hasContentThere = true;
    piece->node = &node;
    node.SetPiece(piece.get());
    return *piece.release();
}

void XMLPiece::TakeHead() {
    if (!hasHeadThere)
        return;
    text = document->NameOf(place);
    attributes = document->AttributesOf(place);
    hasHeadThere = false;
}

void XMLPiece::TakeContent() {
    if (!hasContentThere)
        return;
    XMLNode *child = node->GetFirstChild();
    hasContentThere = false;
    for (XMLContent content(*document, place); content.Next();) {
        if (!content.IsElement()) {
            Append(content.GetKind(), content.Text());
            continue;
        }
        XMLNode *const behind = child->GetNext();
        Link(TakeNode(*child, document));
        child = behind;
    }
}

void XMLPiece::TakeAll() {
    XMLPiece *piece = this;
    for (;;) {
        piece->TakeHead();
        piece->TakeContent();
        if (piece->first != nullptr) {
            piece = piece->first;
            continue;
        }
        while (piece != this && piece->next == nullptr)
            piece = piece->parent;
        if (piece == this)
            return;
        piece = piece->next;
    }
}

} // namespace zelvar
