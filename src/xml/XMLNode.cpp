#include "zelvar/xml/XMLNode.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Hex.h"
#include "zelvar/xml/XMLContent.h"
#include "zelvar/xml/XMLDocument.h"
#include "zelvar/xml/XMLEncoding.h"
#include "zelvar/xml/XMLPiece.h"
#include "zelvar/xml/XMLText.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <new>
#include <optional>
#include <tuple>
#include <utility>

namespace zelvar {

namespace {

using Kind = XMLPiece::Kind;

XMLNode *NextElement(XMLPiece *piece) {
    while (piece != nullptr && piece->kind != Kind::Element)
        piece = piece->next;
    return piece == nullptr ? nullptr : piece->node;
}

/// The tree of a whole document, or null and why not. Nothing outside the text is ever read.
std::shared_ptr<XMLDocument> Parsed(DString text, DString &reason) try {
    if (DString const encoding = EncodingOfXml(text); !encoding.empty()) {
        std::optional<DString> recoded = RecodedXml(text, encoding, kLargestXml, reason);
        if (!recoded)
            return nullptr;
        text = std::move(*recoded);
    }
    return XMLDocument::Check(std::move(text), reason);
} catch (std::bad_alloc const &) {
    reason = "not enough memory";
    return nullptr;
}

template <class Number>
Number ParseNumber(DString const &text, Number fallback) {
    std::string_view digits = Trimmed(text);
    if (digits.starts_with('+') && !digits.starts_with("+-"))
        digits.remove_prefix(1);
    Number value{};
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc{} && end == digits.data() + digits.size() ? value : fallback;
}

constexpr char kEncoding[] = "encoding";
constexpr char kHex[] = "hex";
constexpr char kHexSuffix[] = "Hex";

} // namespace

XMLNode::XMLNode(DString const &name) {
    auto piece = std::make_unique<XMLPiece>(Kind::Element, name);
    piece->node = this;
    SetPiece(piece.release());
}

XMLNode::~XMLNode() {
    XMLPiece *const piece = Piece();
    if (piece == nullptr)
        return;
    piece->Unlink();
    delete piece; // with its document, and so this node's memory, if nothing else needs that
}

void *XMLNode::operator new(std::size_t size) { return ::operator new(size); }

void XMLNode::operator delete(void *memory) { ::operator delete(memory); }

void XMLNode::operator delete(XMLNode *node, std::destroying_delete_t) {
    bool const isKept = (node->m_place & kIsKept) != 0;
    node->~XMLNode();
    if (!isKept)
        ::operator delete(node);
}

XMLPiece *XMLNode::Piece() const {
    static_assert(sizeof(XMLNode) == 12);
    return (m_place & kHasPiece) == 0 ? nullptr : std::bit_cast<XMLPiece *>(m_links);
}

void XMLNode::SetPiece(XMLPiece *piece) {
    m_links = std::bit_cast<Links>(piece);
    m_place |= kHasPiece;
}

bool XMLNode::Load(DFile const &file, DString *error) {
    DString text;
    DString reason;
    if (!file.ReadAll(text, kLargestXml))
        reason = file.GetMoniker() + ": cannot be read";
    else if (!TakeText(std::move(text), reason))
        reason = file.GetMoniker() + ": " + reason;
    if (error != nullptr)
        *error = reason;
    return reason.empty();
}

bool XMLNode::LoadText(std::string_view text, DString *error) {
    DString reason;
    if (text.size() > kLargestXml)
        reason = "is larger than 85 MB";
    else
        std::ignore = TakeText(DString(text), reason);
    if (error != nullptr)
        *error = reason;
    return reason.empty();
}

bool XMLNode::TakeText(DString text, DString &reason) {
    std::shared_ptr<XMLDocument> document;
    if (GetParent() != nullptr)
        reason = "only a root can be loaded";
    else
        document = Parsed(std::move(text), reason);
    if (document != nullptr)
        Piece()->TakeDocument(std::move(document));
    return reason.empty();
}

bool XMLNode::Save(DFile const *file, bool backup) const {
    if (file == nullptr)
        return false;
    DString const text = SaveText();
    if (text.empty())
        return false;
    if (backup && file->Exist()) {
        DString former;
        if (!file->ReadAll(former) || !DFile(file->GetMoniker() + ".bak").WriteAtomically(former))
            return false;
    }
    return file->WriteAtomically(text);
}

DString XMLNode::SaveText(DString *error) const {
    DString reason;
    DString text = WriteXml(*this, reason);
    if (error != nullptr)
        *error = reason;
    return text;
}

DString XMLNode::GetName() const {
    XMLPiece const *const piece = Piece();
    return piece != nullptr ? piece->GetName() : DString(XMLDocument::Of(*this).NameOf(Place()));
}

void XMLNode::SetName(DString const &name) { XMLPiece::Of(*this).text = name; }

std::optional<DString> XMLNode::FindAttr(char const *name) const {
    if (name == nullptr)
        return std::nullopt;
    XMLPiece *const piece = Piece();
    if (piece == nullptr)
        return XMLDocument::Of(*this).AttributeOf(Place(), name);
    if (piece->hasHeadThere)
        return piece->document->AttributeOf(piece->place, name);
    XMLAttribute const *const attribute = piece->FindAttribute(name);
    return attribute == nullptr ? std::nullopt : std::optional(attribute->value);
}

bool XMLNode::HasAttr(char const *name) const { return FindAttr(name).has_value(); }

DString XMLNode::GetAttrStr(char const *name, DString const &fallback) const {
    return FindAttr(name).value_or(fallback);
}

bool XMLNode::GetAttrBool(char const *name, bool fallback) const {
    DString const text = GetAttrStr(name);
    for (char const *word : {"1", "true", "yes", "on"}) {
        if (EqualNoCase(text, word))
            return true;
    }
    for (char const *word : {"0", "false", "no", "off"}) {
        if (EqualNoCase(text, word))
            return false;
    }
    return fallback;
}

long long XMLNode::GetAttrInt(char const *name, long long fallback) const {
    return ParseNumber(GetAttrStr(name), fallback);
}
double XMLNode::GetAttrDouble(char const *name, double fallback) const {
    double const value = ParseNumber(GetAttrStr(name), fallback);
    return std::isfinite(value) ? value : fallback; // "nan" and "inf" are words, not numbers
}

void XMLNode::SetAttr(char const *name, DString const &value) {
    if (name == nullptr)
        return;
    XMLPiece &piece = XMLPiece::Of(*this);
    if (XMLAttribute *attribute = piece.FindAttribute(name); attribute != nullptr)
        attribute->value = value;
    else
        piece.attributes.push_back({.name = name, .value = value});
}
void XMLNode::SetAttrBool(char const *name, bool value) { SetAttr(name, value ? "true" : "false"); }
void XMLNode::SetAttrInt(char const *name, long long value) { SetAttr(name, std::to_string(value)); }

unsigned XMLNode::GetAttrUnt(char const *name, unsigned fallback) const {
    return ParseNumber(GetAttrStr(name), fallback);
}

DString XMLNode::GetText() const {
    DString text;
    XMLPiece const *const piece = Piece();
    if (piece == nullptr || piece->hasContentThere) {
        XMLDocument const &document = piece == nullptr ? XMLDocument::Of(*this) : *piece->document;
        for (XMLContent content(document, piece == nullptr ? Place() : piece->place); content.Next();)
            if (content.IsText())
                text += content.Text();
        return text;
    }
    for (XMLPiece const *part = piece->first; part != nullptr; part = part->next)
        if (part->IsText())
            text += part->text;
    return text;
}

void XMLNode::SetText(DString const &text) {
    XMLPiece &piece = XMLPiece::WithContent(*this);
    for (XMLPiece *part = piece.first; part != nullptr;) {
        XMLPiece *const next = part->next;
        if (part->IsText())
            XMLPiece::Delete(part);
        part = next;
    }
    if (!text.empty())
        piece.Link(*std::make_unique<XMLPiece>(Kind::Text, text).release(), piece.first);
}

void XMLNode::SetSafeText(DString const &bytes) {
    bool const plain = IsXmlText(bytes);
    if (!plain || HasAttr(kEncoding))
        SetAttr(kEncoding, plain ? "" : kHex);
    SetText(plain ? bytes : HexEncode(bytes));
}

DString XMLNode::GetSafeText() const {
    if (GetAttrStr(kEncoding) != kHex)
        return GetText();
    return HexDecode(Trimmed(GetText())).value_or(DString());
}

void XMLNode::SetSafeAttr(DString const &name, DString const &bytes) {
    if (IsXmlText(bytes))
        SetAttr(name.c_str(), bytes);
    else
        SetAttr((name + kHexSuffix).c_str(), HexEncode(bytes));
}

DString XMLNode::GetSafeAttr(DString const &name) const {
    DString const encoded = name + kHexSuffix;
    return HasAttr(encoded.c_str()) ? HexDecode(GetAttrStr(encoded.c_str())).value_or(DString())
                                    : GetAttrStr(name.c_str());
}

XMLNode *XMLNode::GetParent() const {
    if (XMLPiece const *const piece = Piece())
        return piece->parent == nullptr ? nullptr : piece->parent->node;
    return XMLDocument::Of(*this).At(m_links[0]);
}

XMLNode *XMLNode::GetNext() const {
    if (XMLPiece const *const piece = Piece())
        return NextElement(piece->next);
    return (m_place & kLast) != 0 ? nullptr : XMLDocument::Of(*this).At(XMLDocument::IndexOf(*this) + 1);
}

XMLNode *XMLNode::GetFirstChild() const {
    XMLPiece *const piece = Piece();
    if (piece != nullptr && !piece->hasContentThere)
        return NextElement(piece->first);
    XMLDocument &document = piece == nullptr ? XMLDocument::Of(*this) : *piece->document;
    std::uint32_t &first = piece == nullptr ? m_links[1] : piece->firstNode;
    if (first == XMLDocument::kNotMade) {
        std::uint32_t const own = (m_place & kIsKept) != 0 ? XMLDocument::IndexOf(*this) : XMLDocument::kTopNode;
        first = document.MakeChildren(piece == nullptr ? Place() : piece->place, own);
    }
    return first == XMLDocument::kNoNode ? nullptr : document.At(first);
}

XMLNode *XMLNode::GetChldNode(char const *name) const {
    XMLNode *child = name == nullptr ? nullptr : GetFirstChild();
    while (child != nullptr && child->GetName() != name)
        child = child->GetNext();
    return child;
}

int XMLNode::GetChldCount() const {
    int count = 0;
    for (XMLNode const *child = GetFirstChild(); child != nullptr; child = child->GetNext())
        ++count;
    return count;
}

XMLNode *XMLNode::AddChld(XMLNode *child) {
    if (child == nullptr || child == this || child->GetParent() != nullptr)
        return nullptr;
    // A tree cannot hang below itself. One without children is below nothing, which spares the way up.
    XMLPiece &piece = *child->Piece();
    if ((piece.first != nullptr || piece.hasContentThere) && HasAsTop(*child))
        return nullptr;
    XMLPiece::WithContent(*this).Link(piece);
    return child;
}

bool XMLNode::HasAsTop(XMLNode const &top) const {
    XMLNode const *node = this;
    while (XMLNode const *const parent = node->GetParent())
        node = parent;
    return node == &top;
}

XMLNode *XMLNode::AddChld(std::unique_ptr<XMLNode> child) {
    XMLNode *const added = AddChld(child.get());
    return added == nullptr ? nullptr : child.release();
}

XMLNode *XMLNode::AddChld(DString const &name) { return AddChld(std::make_unique<XMLNode>(name).release()); }

std::unique_ptr<XMLNode> XMLNode::TakeChld(XMLNode *child) {
    if (child == nullptr || child->GetParent() != this)
        return nullptr;
    XMLPiece &piece = XMLPiece::Of(*child);
    piece.TakeAll(); // from here on another thread may use it
    piece.Unlink();
    return std::unique_ptr<XMLNode>(child);
}

bool XMLNode::DelChld(XMLNode *child) {
    if (child == nullptr || child->GetParent() != this)
        return false;
    XMLPiece::Delete(&XMLPiece::Of(*child));
    return true;
}

std::unique_ptr<XMLNode> XMLNode::Copy() const {
    auto copy = std::make_unique<XMLNode>(GetName());
    XMLPiece &target = *copy->Piece();
    XMLPiece const *const piece = Piece();
    if (piece == nullptr) {
        XMLDocument const &document = XMLDocument::Of(*this);
        target.attributes = document.AttributesOf(Place());
        target.AppendContentOf(document, Place());
        return copy;
    }
    target.attributes = piece->GetAttributes();
    if (piece->outside != nullptr)
        target.outside = std::make_unique<XMLPiece::Outside>(*piece->outside);
    target.AppendContentOf(*piece);
    return copy;
}

void XMLNode::ChldItr::Rmv() {
    XMLNode *const next = m_current->GetNext();
    m_parent.DelChld(m_current);
    m_current = next;
}

} // namespace zelvar
