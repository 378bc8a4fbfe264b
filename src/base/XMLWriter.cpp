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

/// Characters that the reader would change are written by their number, so that every text comes back as it was.
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
            if (static_cast<unsigned char>(c) > (place == Place::BetweenElements ? 0x20 : 0x1F) ||
                (place == Place::Text && (c == '\n' || c == '\t')))
                out += c;
            else
                out.append("&#").append(std::to_string(c)).append(";");
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

void PutOther(DString &out, XMLPiece const &piece) {
    switch (piece.kind) {
    case Kind::Text:
        PutEscaped(out, piece.text, NeedsNumbers(piece) ? Place::BetweenElements : Place::Text);
        break;
    case Kind::CData:
        PutCData(out, piece.text);
        break;
    case Kind::Comment:
        out += "<!--";
        PutParted(out, piece.text, "--");
        out += piece.text.ends_with('-') ? " -->" : "-->";
        break;
    case Kind::Instruction:
        out += "<?";
        PutParted(out, piece.text, "?>");
        out += "?>";
        break;
    case Kind::DocType:
        out.append("<!DOCTYPE ").append(piece.text).append(">");
        break;
    case Kind::Element:
        break;
    }
}

class TreeWriter {
public:
    explicit TreeWriter(DString &out) : m_out(out) {}

    /// False if the tree holds a name that XML does not know, or is deeper than it could be loaded again.
    bool Put(XMLPiece const &element, int depth) {
        if (depth > kDeepestXml || !IsXmlName(element.text))
            return false;
        m_out.append("<").append(element.text);
        for (XMLAttribute const &attribute : element.attributes) {
            if (!IsXmlName(attribute.name))
                return false;
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
                PutOther(m_out, *child);
            else if (!Put(*child, depth + 1))
                return false;
        }
        if (!mixed)
            BeginLine(depth - 1);
        m_out.append("</").append(element.text).append(">");
        return true;
    }

private:
    void BeginLine(int indent) { m_out.append("\n").append(static_cast<std::size_t>(indent) * 2, ' '); }

    DString &m_out;
};

} // namespace

DString WriteXml(XMLNode const &root) {
    XMLPiece const &piece = XMLPiece::Of(root);
    DString text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    for (auto const &before : piece.prolog) {
        PutOther(text, *before);
        text += '\n';
    }
    if (!TreeWriter(text).Put(piece, 1))
        return {};
    text += '\n';
    for (auto const &behind : piece.epilog) {
        PutOther(text, *behind);
        text += '\n';
    }
    return HoldsNul(text) ? DString() : text;
}

} // namespace zelvar
