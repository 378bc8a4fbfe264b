#include "zelvar/base/XMLEncoding.h"
#include "zelvar/base/XMLPiece.h"
#include "zelvar/base/XMLText.h"

#include <algorithm>

namespace zelvar {

namespace {

using Kind = XMLPiece::Kind;

/// Letters, digits, "_", ":", "-", "." and all beyond ASCII, beginning with none of the digits, "-" and ".".
bool IsXmlName(std::string_view name) {
    auto const isNameChar = [](char c) {
        return static_cast<unsigned char>(c) >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               (c >= '0' && c <= '9') || c == '_' || c == ':' || c == '-' || c == '.';
    };
    return !name.empty() && std::all_of(name.begin(), name.end(), isNameChar) && name.front() != '-' &&
           name.front() != '.' && !(name.front() >= '0' && name.front() <= '9');
}

enum class Place { Text, Attribute, BetweenElements };

/// Blanks between elements are dropped by the reader unless they are written by their numbers.
bool NeedsNumbers(XMLPiece const &text) {
    return (text.previous != nullptr || text.next != nullptr) &&
           text.text.find_first_not_of(" \t\n\r") == std::string::npos;
}

/// Characters that the reader would change are written by their number, so that every text comes back as it was. Those
/// that no XML holds go as they are, for who looks at the whole.
void PutEscaped(DString &out, std::string_view text, Place place) {
    for (char const c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += place == Place::Attribute ? "&quot;" : "\"";
            break;
        default:
            if (c == '\r' || (place != Place::Text && (c == '\n' || c == '\t')) ||
                (place == Place::BetweenElements && c == ' '))
                out.append("&#").append(std::to_string(c)).append(";");
            else
                out += c;
        }
    }
}

/// `text` with a blank put into each `pair`, which may not stand there.
void PutParted(DString &out, std::string_view text, std::string_view pair) {
    for (std::size_t at = text.find(pair); at != std::string_view::npos; at = text.find(pair)) {
        out.append(text.substr(0, at + 1)).append(" ");
        text.remove_prefix(at + 1);
    }
    out.append(text);
}

void PutCData(DString &out, std::string_view text) {
    constexpr std::string_view end = "]]>";
    out += "<![CDATA[";
    for (std::size_t at = text.find(end); at != std::string_view::npos; at = text.find(end)) {
        out.append(text.substr(0, at + 2)).append("]]><![CDATA[");
        text.remove_prefix(at + 2);
    }
    out.append(text).append(end);
}

void PutOther(DString &out, Kind kind, DString const &text, Place place = Place::Text) {
    switch (kind) {
    case Kind::Text:
        PutEscaped(out, text, place);
        break;
    case Kind::CData:
        PutCData(out, text);
        break;
    case Kind::Comment:
        out += "<!--";
        PutParted(out, text, "--");
        out += text.ends_with('-') ? " -->" : "-->";
        break;
    case Kind::Instruction:
        out += "<?";
        PutParted(out, text, "?>");
        out += "?>";
        break;
    case Kind::DocType:
        out.append("<!DOCTYPE ").append(text).append(">");
        break;
    case Kind::Element:
        break;
    }
}

bool HasTwoOfOneName(std::vector<XMLAttribute> const &attributes) {
    std::vector<std::string_view> names;
    names.reserve(attributes.size());
    for (XMLAttribute const &attribute : attributes)
        names.emplace_back(attribute.name);
    std::sort(names.begin(), names.end());
    return std::adjacent_find(names.begin(), names.end()) != names.end();
}

class TreeWriter {
public:
    TreeWriter(DString &out, DString &reason) : m_out(out), m_reason(reason) {}

    /// False if the tree holds a name that XML does not know, twice the same, or is deeper than it could be loaded
    /// again.
    bool Put(XMLPiece const &element, int depth) {
        if (depth > kDeepestXml)
            return Refuse(Format("elements nested deeper than %d levels", kDeepestXml));
        if (!IsXmlName(element.text))
            return Refuse("\"" + element.text + "\" is no name of an element");
        if (element.attributes.size() > 1 && HasTwoOfOneName(element.attributes))
            return Refuse("\"" + element.text + "\" has two attributes of one name");
        m_out.append("<").append(element.text);
        for (XMLAttribute const &attribute : element.attributes) {
            if (!IsXmlName(attribute.name))
                return Refuse("\"" + attribute.name + "\" is no name of an attribute");
            m_out.append(" ").append(attribute.name).append("=\"");
            PutEscaped(m_out, attribute.value, Place::Attribute);
            m_out += '"';
        }
        if (element.first == nullptr) {
            m_out += "/>";
            return true;
        }
        m_out += '>';
        // Between texts every blank counts; elsewhere each child stands on a line of its own.
        bool mixed = false;
        for (XMLPiece const *child = element.first; child != nullptr; child = child->next)
            mixed = mixed || child->IsText();
        for (XMLPiece const *child = element.first; child != nullptr; child = child->next) {
            if (!mixed)
                BeginLine(depth);
            if (!child->IsElement())
                PutOther(m_out, child->kind, child->text, NeedsNumbers(*child) ? Place::BetweenElements : Place::Text);
            else if (!Put(*child, depth + 1))
                return false;
        }
        if (!mixed)
            BeginLine(depth - 1);
        m_out.append("</").append(element.text).append(">");
        return true;
    }

private:
    bool Refuse(DString reason) {
        m_reason = std::move(reason);
        return false;
    }
    void BeginLine(int indent) { m_out.append("\n").append(static_cast<std::size_t>(indent) * 2, ' '); }

    DString &m_out;
    DString &m_reason;
};

} // namespace

DString WriteXml(XMLNode const &root, DString &reason) {
    XMLPiece const &piece = XMLPiece::Of(root);
    DString text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    auto const putAll = [&](auto const &others) {
        for (auto const &[kind, other] : others) {
            PutOther(text, kind, other);
            text += '\n';
        }
    };
    if (piece.outside != nullptr)
        putAll(piece.outside->prolog);
    if (!TreeWriter(text, reason).Put(piece, 1))
        return {};
    text += '\n';
    if (piece.outside != nullptr)
        putAll(piece.outside->epilog);
    if (HoldsNul(text) || !IsXmlText(text)) {
        reason = "a text holds bytes or characters that no XML may hold";
        return {};
    }
    return text;
}

} // namespace zelvar
