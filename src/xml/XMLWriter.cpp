#include "zelvar/xml/XMLContent.h"
#include "zelvar/xml/XMLEncoding.h"
#include "zelvar/xml/XMLPiece.h"
#include "zelvar/xml/XMLText.h"

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
Place PlaceOf(std::string_view text, bool isAlone) {
    return !isAlone && IsXmlBlank(text) ? Place::BetweenElements : Place::Text;
}

/// Characters that the reader would change are written by their number, so that every text comes back as it was. Those
/// that no XML holds go as they are, for who looks at the whole.
void PutEscaped(DString &out, std::string_view text, Place place) {
    std::string_view const changed = place == Place::Text        ? "&<>\r"
                                     : place == Place::Attribute ? "&<>\r\n\t\""
                                                                 : "&<>\r\n\t ";
    auto const isChanged = [changed](char c) {
        return static_cast<unsigned char>(c) < 0x40 && changed.find(c) != std::string_view::npos;
    };
    while (!text.empty()) {
        auto const *const at = std::find_if(text.begin(), text.end(), isChanged);
        out.append(text.begin(), at);
        text.remove_prefix(static_cast<std::size_t>(at - text.begin()));
        if (text.empty())
            break;
        switch (char const c = text.front()) {
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
            out += "&quot;";
            break;
        default:
            out.append("&#").append(std::to_string(c)).append(";");
        }
        text.remove_prefix(1);
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

void PutOther(DString &out, Kind kind, DString const &text, Place place = Place::Text) {
    switch (kind) {
    case Kind::Text:
        PutEscaped(out, text, place);
        break;
    case Kind::CData:
        out.append("<![CDATA[").append(text).append("]]>"); // as it was read, so nothing in it ends it
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

void PutOutside(DString &out, std::string_view written) {
    XMLScanner scanner(written);
    for (auto token = scanner.Next(); token != XMLScanner::Token::End; token = scanner.Next()) {
        std::optional<Kind> const kind = XmlKindOf(token);
        if (!kind || *kind == Kind::Text)
            continue;
        PutOther(out, *kind, XmlContentOf(scanner, *kind));
        out += '\n';
    }
}

/// Changes the order of the names.
bool HasTwice(std::vector<std::string_view> &names) {
    constexpr std::size_t few = 8;
    if (names.size() > few) {
        std::sort(names.begin(), names.end());
        return std::adjacent_find(names.begin(), names.end()) != names.end();
    }
    for (auto name = names.begin(); name != names.end(); ++name)
        if (std::find(names.begin(), name, *name) != name)
            return true;
    return false;
}

class TreeWriter {
public:
    TreeWriter(DString &out, DString &reason) : m_out(out), m_reason(reason) {}

    /// False if the tree holds a name that XML does not know, twice the same, or is deeper than it could be loaded
    /// again.
    bool Put(XMLPiece const &element, int depth) {
        DString const name = element.GetName();
        if (element.hasHeadThere ? !PutHead(*element.document, element.place, depth) : !PutHead(element, depth))
            return false;
        if (element.hasContentThere) {
            XMLContent content(*element.document, element.place);
            return PutContent(content, name, depth);
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
                PutOther(m_out, child->kind, child->text, PlaceOf(child->text, element.first == element.last));
            else if (!Put(*child, depth + 1))
                return false;
        }
        return PutEnd(name, depth, mixed);
    }

    /// The same of an element of a document.
    bool Put(XMLDocument const &document, std::uint32_t element, int depth) {
        XMLContent content(document, element);
        return PutHead(document, element, depth) && PutContent(content, document.NameOf(element), depth);
    }

private:
    bool PutHead(XMLPiece const &element, int depth) {
        if (!BeginHead(element.text, depth))
            return false;
        for (XMLAttribute const &attribute : element.attributes)
            if (!PutAttribute(attribute.name, attribute.value))
                return false;
        return EndHead(element.text);
    }

    bool PutHead(XMLDocument const &document, std::uint32_t element, int depth) {
        std::string_view const name = document.NameOf(element);
        if (!BeginHead(name, depth))
            return false;
        for (XMLAttributeScanner attributes = document.ScanAttributes(element); attributes.Next();)
            if (!PutAttribute(attributes.Name(), XmlValueOf(attributes.Raw())))
                return false;
        return EndHead(name);
    }

    bool BeginHead(std::string_view name, int depth) {
        if (depth > kDeepestXml)
            return Refuse(Format("elements nested deeper than %d levels", kDeepestXml));
        if (!IsXmlName(name))
            return Refuse("\"" + DString(name) + "\" is no name of an element");
        m_out.append("<").append(name);
        m_names.clear();
        return true;
    }

    /// The name must live until `EndHead`.
    bool PutAttribute(std::string_view name, std::string_view value) {
        if (!IsXmlName(name))
            return Refuse("\"" + DString(name) + "\" is no name of an attribute");
        m_names.push_back(name);
        m_out.append(" ").append(name).append("=\"");
        PutEscaped(m_out, value, Place::Attribute);
        m_out += '"';
        return true;
    }

    bool EndHead(std::string_view name) {
        return !HasTwice(m_names) || Refuse("\"" + DString(name) + "\" has two attributes of one name");
    }

    /// `content` stands at its begin, and at its end afterwards.
    bool PutContent(XMLContent &content, std::string_view name, int depth) {
        int count = 0;
        bool mixed = false;
        for (XMLContent ahead = content; (!mixed || count < 2) && ahead.Next(); ++count)
            mixed = mixed || ahead.IsText();
        m_out += count == 0 ? "/>" : ">";
        while (content.Next()) {
            if (!mixed)
                BeginLine(depth);
            if (!content.IsElement()) {
                DString const text = content.Text();
                PutOther(m_out, content.GetKind(), text, PlaceOf(text, count == 1));
                continue;
            }
            XMLContent child = content.InChild();
            if (!PutHead(content.Document(), content.Element(), depth + 1) ||
                !PutContent(child, content.Name(), depth + 1))
                return false;
            content.GoBehind(child);
        }
        return count == 0 || PutEnd(name, depth, mixed);
    }

    bool PutEnd(std::string_view name, int depth, bool mixed) {
        if (!mixed)
            BeginLine(depth - 1);
        m_out.append("</").append(name).append(">");
        return true;
    }
    bool Refuse(DString reason) {
        m_reason = std::move(reason);
        return false;
    }
    void BeginLine(int indent) { m_out.append("\n").append(static_cast<std::size_t>(indent) * 2, ' '); }

    DString &m_out;
    DString &m_reason;
    std::vector<std::string_view> m_names{}; ///< of the attributes of one element
};

} // namespace

DString WriteXml(XMLNode const &root, DString &reason) {
    XMLPiece const *const piece = XMLPiece::IfAny(root);
    XMLPiece::Outside const none;
    XMLPiece::Outside const &outside = piece == nullptr || piece->outside == nullptr ? none : *piece->outside;
    DString text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    PutOutside(text, outside.before);
    TreeWriter writer(text, reason);
    if (piece != nullptr ? !writer.Put(*piece, 1) : !writer.Put(XMLDocument::Of(root), XMLDocument::PlaceOf(root), 1))
        return {};
    text += '\n';
    PutOutside(text, outside.behind);
    if (HoldsNul(text) || !IsXmlText(text)) {
        reason = "a text holds bytes or characters that no XML may hold";
        return {};
    }
    return text;
}

} // namespace zelvar
