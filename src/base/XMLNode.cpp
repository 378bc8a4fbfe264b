#include "zelvar/base/XMLNode.h"

#include "zelvar/base/DFile.h"
#include "zelvar/base/Hex.h"
#include "zelvar/base/XMLEncoding.h"
#include "zelvar/base/XMLPiece.h"
#include "zelvar/base/XMLText.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace zelvar {

namespace {

using Kind = XMLPiece::Kind;

XMLNode *NextElement(XMLPiece *piece) {
    while (piece != nullptr && piece->kind != Kind::Element)
        piece = piece->next;
    return piece == nullptr ? nullptr : piece->node;
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

XMLNode::XMLNode(DString const &name) : m_piece(std::make_unique<XMLPiece>(Kind::Element, name)) {
    m_piece->node = this;
}

XMLNode::~XMLNode() { m_piece->Unlink(); }

bool XMLNode::Load(DFile const &file, DString *error) {
    DString text;
    DString reason;
    if (!file.ReadAll(text, kLargestXml))
        reason = file.GetMoniker() + ": cannot be read";
    else if (!LoadText(text, &reason))
        reason = file.GetMoniker() + ": " + reason;
    if (error != nullptr)
        *error = reason;
    return reason.empty();
}

bool XMLNode::LoadText(std::string_view text, DString *error) {
    DString reason;
    std::unique_ptr<XMLNode> loaded;
    if (m_piece->parent != nullptr)
        reason = "only a root can be loaded";
    else if (text.size() > kLargestXml)
        reason = "is larger than 85 MB";
    else
        loaded = ParseXml(text, reason);
    if (error != nullptr)
        *error = reason;
    if (!loaded)
        return false;
    m_piece->TakeContent(*loaded->m_piece);
    return true;
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

DString const &XMLNode::GetName() const { return m_piece->text; }
void XMLNode::SetName(DString const &name) { m_piece->text = name; }

bool XMLNode::HasAttr(char const *name) const { return m_piece->FindAttribute(name) != nullptr; }

DString XMLNode::GetAttrStr(char const *name, DString const &fallback) const {
    XMLAttribute const *attribute = m_piece->FindAttribute(name);
    return attribute == nullptr ? fallback : attribute->value;
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
    if (XMLAttribute *attribute = m_piece->FindAttribute(name); attribute != nullptr)
        attribute->value = value;
    else
        m_piece->attributes.push_back({.name = name, .value = value});
}
void XMLNode::SetAttrBool(char const *name, bool value) { SetAttr(name, value ? "true" : "false"); }
void XMLNode::SetAttrInt(char const *name, long long value) { SetAttr(name, std::to_string(value)); }

unsigned XMLNode::GetAttrUnt(char const *name, unsigned fallback) const {
    return ParseNumber(GetAttrStr(name), fallback);
}

DString XMLNode::GetText() const {
    DString text;
    for (XMLPiece const *piece = m_piece->first; piece != nullptr; piece = piece->next) {
        if (piece->IsText())
            text += piece->text;
    }
    return text;
}

void XMLNode::SetText(DString const &text) {
    for (XMLPiece *piece = m_piece->first; piece != nullptr;) {
        XMLPiece *const next = piece->next;
        if (piece->IsText())
            XMLPiece::Delete(piece);
        piece = next;
    }
    if (!text.empty())
        m_piece->Link(*std::make_unique<XMLPiece>(Kind::Text, text).release(), m_piece->first);
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

XMLNode *XMLNode::GetParent() const { return m_piece->parent == nullptr ? nullptr : m_piece->parent->node; }
XMLNode *XMLNode::GetNext() const { return NextElement(m_piece->next); }
XMLNode *XMLNode::GetFirstChild() const { return NextElement(m_piece->first); }

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
    if (child->m_piece->first != nullptr && m_piece->Top() == child->m_piece.get())
        return nullptr;
    m_piece->Link(*child->m_piece);
    return child;
}

XMLNode *XMLNode::AddChld(DString const &name) { return AddChld(std::make_unique<XMLNode>(name).release()); }

std::unique_ptr<XMLNode> XMLNode::TakeChld(XMLNode *child) {
    if (child == nullptr || child->GetParent() != this)
        return nullptr;
    child->m_piece->Unlink();
    return std::unique_ptr<XMLNode>(child);
}

bool XMLNode::DelChld(XMLNode *child) { return TakeChld(child) != nullptr; }

std::unique_ptr<XMLNode> XMLNode::Copy() const {
    auto copy = std::make_unique<XMLNode>(GetName());
    copy->m_piece->attributes = m_piece->attributes;
    if (m_piece->outside != nullptr)
        copy->m_piece->outside = std::make_unique<XMLPiece::Outside>(*m_piece->outside);
    XMLPiece *target = copy->m_piece.get();
    XMLPiece const *source = m_piece.get();
    for (;;) {
        if (source->first != nullptr) {
            source = source->first;
        } else {
            while (source != m_piece.get() && source->next == nullptr) {
                source = source->parent;
                target = target->parent;
            }
            if (source == m_piece.get())
                return copy;
            source = source->next;
            target = target->parent;
        }
        target = &target->AppendCopy(*source);
    }
}

void XMLNode::ChldItr::Rmv() {
    XMLNode *const next = m_current->GetNext();
    m_parent.DelChld(m_current);
    m_current = next;
}

} // namespace zelvar
