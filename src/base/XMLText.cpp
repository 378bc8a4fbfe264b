#include "zelvar/base/XMLText.h"

#include "zelvar/base/XMLPiece.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <pugixml.hpp>

namespace zelvar {

namespace {

using Kind = XMLPiece::Kind;

std::optional<Kind> KindOf(pugi::xml_node source) {
    switch (source.type()) {
    case pugi::node_element:
        return Kind::Element;
    case pugi::node_pcdata:
        return Kind::Text;
    case pugi::node_cdata:
        return Kind::CData;
    case pugi::node_comment:
        return Kind::Comment;
    case pugi::node_pi:
        return Kind::Instruction;
    case pugi::node_doctype:
        return Kind::DocType;
    default:
        return std::nullopt;
    }
}

/// An instruction is kept as "target content".
DString ContentOf(pugi::xml_node source, Kind kind) {
    if (kind == Kind::Instruction)
        return DString(source.name()) + " " + source.value();
    return kind == Kind::Element ? source.name() : source.value();
}

bool IsUtf16Or32(std::string_view text) {
    return text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE") ||
           text.substr(0, std::min<std::size_t>(text.size(), 4)).find('\0') != std::string_view::npos;
}

/// Builds our tree from that of the parser.
class TreeBuilder {
public:
    /// Null, with `reason` set, if the document breaks a limit or is no whole document.
    std::unique_ptr<XMLNode> Build(pugi::xml_document const &document, DString &reason) {
        std::unique_ptr<XMLNode> root;
        std::vector<std::unique_ptr<XMLPiece>> prolog;
        std::vector<std::unique_ptr<XMLPiece>> epilog;
        for (pugi::xml_node source : document.children()) {
            auto const kind = KindOf(source);
            if (!kind)
                continue;
            if (*kind == Kind::Text && Trimmed(source.value()).empty())
                continue;
            if (*kind == Kind::Element && !root) {
                root = std::make_unique<XMLNode>();
                m_failed = !Fill(XMLPiece::Of(*root), source);
            } else if (*kind == Kind::Element || *kind == Kind::Text || *kind == Kind::CData) {
                m_failed = true;
                m_reason = "content outside the root element";
            } else if (*kind == Kind::DocType && DString(source.value()).find("<!ENTITY") != DString::npos) {
                m_failed = true;
                m_reason = "entity declarations are refused";
            } else {
                (root ? epilog : prolog).push_back(std::make_unique<XMLPiece>(*kind, ContentOf(source, *kind)));
            }
            if (m_failed) {
                reason = m_reason;
                return nullptr;
            }
        }
        if (!root) {
            reason = "no root element";
            return nullptr;
        }
        XMLPiece::Of(*root).prolog = std::move(prolog);
        XMLPiece::Of(*root).epilog = std::move(epilog);
        return root;
    }

private:
    bool Count(std::size_t pieces) {
        m_pieces += pieces;
        if (m_pieces > kMostXmlPieces)
            m_reason = "too many elements";
        return m_pieces <= kMostXmlPieces;
    }

    bool TakeElement(XMLPiece &target, pugi::xml_node source) {
        target.text = source.name();
        for (pugi::xml_attribute attribute : source.attributes())
            target.attributes.push_back({.name = attribute.name(), .value = attribute.value()});
        return Count(1 + target.attributes.size());
    }

    bool Fill(XMLPiece &root, pugi::xml_node source) {
        if (!TakeElement(root, source))
            return false;
        int depth = 1;
        XMLPiece *target = &root;
        source = source.first_child();
        while (source || target != &root) {
            if (!source) { // up to the element behind the one just finished
                source = m_open.back().next_sibling();
                m_open.pop_back();
                target = target->parent;
                --depth;
                continue;
            }
            if (source.type() == pugi::node_element) {
                if (++depth > kDeepestXml) {
                    m_reason = "elements nested deeper than 256 levels";
                    return false;
                }
                target = &target->AppendCopy(XMLPiece(Kind::Element, {}));
                if (!TakeElement(*target, source))
                    return false;
                m_open.push_back(source);
                source = source.first_child();
                continue;
            }
            if (auto const kind = KindOf(source); kind && Count(1))
                target->AppendCopy(XMLPiece(*kind, ContentOf(source, *kind)));
            else if (kind)
                return false;
            source = source.next_sibling();
        }
        return true;
    }

    std::vector<pugi::xml_node> m_open; ///< elements whose children are being taken, without the root
    std::size_t m_pieces = 0;
    bool m_failed = false;
    DString m_reason;
};

/// `digits` is what follows "&#". Numbers are counted as the parser does, in 32 bits: one too large for them may be 0.
bool IsNulReference(std::string_view digits) {
    bool const hexadecimal = digits.starts_with('x');
    if (hexadecimal)
        digits.remove_prefix(1);
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        char const c = digits[i];
        char const lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
        if (c >= '0' && c <= '9')
            code = code * (hexadecimal ? 16 : 10) + static_cast<std::uint32_t>(c - '0');
        else if (hexadecimal && lower >= 'a' && lower <= 'f')
            code = code * 16 + static_cast<std::uint32_t>(lower - 'a' + 10);
        else
            return c == ';' && i > 0 && code == 0;
    }
    return false;
}

} // namespace

bool HoldsNul(std::string_view xml) {
    if (xml.find('\0') != std::string_view::npos)
        return true;
    constexpr std::string_view reference = "&#";
    for (std::size_t at = xml.find(reference); at != std::string_view::npos; at = xml.find(reference, at + 1)) {
        if (IsNulReference(xml.substr(at + reference.size())))
            return true;
    }
    return false;
}

std::unique_ptr<XMLNode> ParseXml(std::string_view text, DString &reason) try {
    if (!IsUtf16Or32(text) && HoldsNul(text)) {
        reason = "holds a NUL character";
        return nullptr;
    }
    constexpr unsigned flags = pugi::parse_default | pugi::parse_fragment | pugi::parse_comments | pugi::parse_pi |
                               pugi::parse_doctype | pugi::parse_ws_pcdata_single;
    pugi::xml_document document;
    pugi::xml_parse_result const result = document.load_buffer(text.data(), text.size(), flags);
    if (!result) {
        std::string_view const before =
            text.substr(0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)));
        reason = Format("line %d: %s", static_cast<int>(1 + std::count(before.begin(), before.end(), '\n')),
                        result.description());
        return nullptr;
    }
    return TreeBuilder().Build(document, reason);
} catch (std::bad_alloc const &) {
    reason = "not enough memory";
    return nullptr;
}

} // namespace zelvar
