#include "zelvar/base/XMLText.h"

#include "zelvar/base/XMLEncoding.h"
#include "zelvar/base/XMLPiece.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
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

/// Builds our tree from that of the parser, which gives up what has been taken.
class TreeBuilder {
public:
    /// Null, with `reason` set, if the document breaks a limit or is no whole document.
    std::unique_ptr<XMLNode> Build(pugi::xml_document &document, DString &reason) {
        std::unique_ptr<XMLNode> root;
        auto outside = std::make_unique<XMLPiece::Outside>();
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
                (root ? outside->epilog : outside->prolog).emplace_back(*kind, ContentOf(source, *kind));
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
        XMLPiece::Of(*root).outside = std::move(outside);
        return root;
    }

private:
    static void TakeElement(XMLPiece &target, pugi::xml_node source) {
        target.text = source.name();
        auto const attributes = source.attributes();
        target.attributes.reserve(static_cast<std::size_t>(std::distance(attributes.begin(), attributes.end())));
        for (pugi::xml_attribute attribute : attributes)
            target.attributes.push_back({.name = attribute.name(), .value = attribute.value()});
    }

    /// The next one; this one is given up.
    static pugi::xml_node Behind(pugi::xml_node source) {
        pugi::xml_node const next = source.next_sibling();
        source.parent().remove_child(source);
        return next;
    }

    bool Fill(XMLPiece &root, pugi::xml_node source) {
        TakeElement(root, source);
        int depth = 1;
        XMLPiece *target = &root;
        source = source.first_child();
        while (source || target != &root) {
            if (!source) { // up to the element behind the one just finished
                source = Behind(m_open.back());
                m_open.pop_back();
                target = target->parent;
                --depth;
                continue;
            }
            if (source.type() == pugi::node_element) {
                if (++depth > kDeepestXml) {
                    m_reason = Format("elements nested deeper than %d levels", kDeepestXml);
                    return false;
                }
                target = &target->Append(Kind::Element, {});
                TakeElement(*target, source);
                m_open.push_back(source);
                source = source.first_child();
                continue;
            }
            if (auto const kind = KindOf(source))
                target->Append(*kind, ContentOf(source, *kind));
            source = Behind(source);
        }
        return true;
    }

    std::vector<pugi::xml_node> m_open; ///< elements whose children are being taken, without the root
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

std::size_t MemoryForXml(std::string_view xml) {
    constexpr std::size_t shortText = 15; // bytes that a text holds within itself
    // Counted without regard to where a character stands, so that nothing can hide: there are no more elements and the
    // like than "<", no more attributes than "=", no texts but between ">" and "<", and none goes beyond a "<".
    std::size_t pieces = 0;
    std::size_t texts = 0;
    std::size_t attributes = 0;
    std::size_t longTexts = 0;
    std::size_t former = 0; // "<"
    bool hasText = true;
    for (std::size_t i = 0; i < xml.size(); ++i) {
        char const c = xml[i];
        if (c == '<') {
            bool const closes = xml.substr(i + 1).starts_with('/');
            bool const isBlankAlone = closes && i > 0 && xml[i - 1] != '>';
            pieces += closes ? 0 : 1;
            texts += hasText || isBlankAlone ? 1 : 0;
            longTexts += (i - former) / shortText;
            former = i;
            hasText = true;
        } else if (c == '>') {
            hasText = false;
        } else {
            attributes += c == '=' ? 1 : 0;
            hasText = hasText || (c != ' ' && c != '\n' && c != '\t' && c != '\r');
        }
    }
    longTexts = std::min(pieces + texts + 2 * attributes, longTexts + (xml.size() - former) / shortText);
    constexpr std::size_t head = 16; // of a block of memory, and what it is rounded up by
    constexpr std::size_t parsersPiece = 64;
    constexpr std::size_t parsersAttribute = 40;
    constexpr std::size_t piece = sizeof(XMLPiece) + head;
    constexpr std::size_t element = piece + sizeof(XMLNode) + head + 2 * head;
    std::size_t const parsers = (pieces + texts) * parsersPiece + attributes * parsersAttribute;
    std::size_t const own = pieces * element + texts * piece + attributes * sizeof(XMLAttribute);
    return std::max(parsers, own) + 2 * xml.size() + longTexts * 2 * head;
}

std::unique_ptr<XMLNode> ParseXml(std::string_view text, DString &reason) try {
    std::optional<DString> recoded;
    if (DString const encoding = EncodingOfXml(text); !encoding.empty()) {
        recoded = RecodedXml(text, encoding, kLargestXml, reason);
        if (!recoded)
            return nullptr;
        text = *recoded;
    }
    if (HoldsNul(text)) {
        reason = "holds a NUL character";
        return nullptr;
    }
    if (MemoryForXml(text) + text.size() > kMostXmlMemory) {
        reason = "has more elements and texts than 256 MB of memory hold";
        return nullptr;
    }
    constexpr unsigned flags = pugi::parse_default | pugi::parse_fragment | pugi::parse_comments | pugi::parse_pi |
                               pugi::parse_doctype | pugi::parse_ws_pcdata_single;
    pugi::xml_document document;
    pugi::xml_parse_result const result = document.load_buffer(text.data(), text.size(), flags, pugi::encoding_utf8);
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
