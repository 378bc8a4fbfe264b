#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>

namespace zelvar {

/// Walks over an XML document, or a part of one, tag by tag. Takes nothing apart that nobody asks for: the text must
/// outlive this.
class XMLScanner {
public:
    enum class Token : std::uint8_t {
        Text,
        CData,
        Comment,
        Instruction,
        Declaration, ///< "<?xml ...?>", wherever it stands
        DocType,
        Open,
        Empty, ///< an element without an end tag
        Close,
        End,   ///< of the document
        Broken ///< `Reason` tells why; the walk does not go on
    };

    explicit XMLScanner(std::string_view xml, std::size_t at = 0) : m_xml(xml), m_at(at) {}

    Token Next();
    /// Where the token begins, in bytes.
    [[nodiscard]] std::size_t Begin() const { return m_begin; }
    /// Where the next one begins.
    [[nodiscard]] std::size_t At() const { return m_at; }
    void MoveTo(std::size_t at) { m_at = at; }
    /// Of an element or an instruction.
    [[nodiscard]] std::string_view Name() const { return m_name; }
    /// As it is written: the content of a text or the like, the attributes of an element.
    [[nodiscard]] std::string_view Raw() const { return m_raw; }
    [[nodiscard]] char const *Reason() const { return m_reason; }
    /// Whether an end tag comes next.
    [[nodiscard]] bool IsBeforeClose() const { return m_xml.substr(m_at, 2) == "</"; }

private:
    Token Break(char const *reason);
    Token Found(Token token, std::size_t rawBegin, std::size_t rawEnd, std::size_t end);
    Token OpenTag();
    Token CloseTag();
    Token Question();
    Token Exclamation();
    Token DocType();

    std::string_view m_xml;
    std::size_t m_at;
    std::size_t m_begin = 0;
    std::string_view m_name{};
    std::string_view m_raw{};
    char const *m_reason = "";
};

/// The attributes in the `Raw` of an element, in their order.
class XMLAttributeScanner {
public:
    explicit XMLAttributeScanner(std::string_view raw) : m_rest(raw) {}

    /// False at the end, and where they are broken.
    bool Next();
    [[nodiscard]] std::string_view Name() const { return m_name; }
    [[nodiscard]] std::string_view Raw() const { return m_raw; } ///< the value as it is written
    [[nodiscard]] std::string_view Rest() const { return m_rest; }

private:
    std::string_view m_rest;
    std::string_view m_name{};
    std::string_view m_raw{};
};

/// The name at the start of `xml`; empty if there is none.
[[nodiscard]] std::string_view XmlNameAt(std::string_view xml);

[[nodiscard]] bool IsXmlBlank(std::string_view text);

} // namespace zelvar
