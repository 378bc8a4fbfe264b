#include "zelvar/xml/XMLDocument.h"

#include "zelvar/xml/XMLContent.h"
#include "zelvar/xml/XMLText.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace zelvar {

using Token = XMLScanner::Token;

/// Reads a document through once: whether it is whole and keeps the limits, and where its elements end.
class XMLDocument::Checker {
public:
    explicit Checker(XMLDocument &document) : m_document(document), m_scanner(document.Text()) {
        constexpr std::string_view mark = "\xEF\xBB\xBF"; // of the byte order
        m_scanner.MoveTo(document.Text().starts_with(mark) ? mark.size() : 0);
    }

    /// Null, or what is wrong.
    char const *Run() {
        for (;;) {
            Token const token = m_scanner.Next();
            char const *const wrong = Take(token);
            if (wrong != nullptr || token == Token::End)
                return wrong;
        }
    }
    [[nodiscard]] std::size_t At() const { return m_scanner.Begin(); }

private:
    struct OpenElement {
        std::string_view name;
        std::uint32_t begin = 0;
        Extent *extent = nullptr; ///< null before its first child
    };

    char const *Take(Token token) {
        switch (token) {
        case Token::Open:
        case Token::Empty:
            return TakeElement(token == Token::Open);
        case Token::Close:
            return TakeEnd();
        case Token::Text:
            return m_open.empty() && !IsXmlBlank(m_scanner.Raw()) ? kOutside : nullptr;
        case Token::CData:
            return m_open.empty() ? kOutside : nullptr;
        case Token::DocType:
            if (!m_open.empty())
                return "a document type inside an element";
            return m_scanner.Raw().find("<!ENTITY") != std::string_view::npos ? "entity declarations are refused"
                                                                              : nullptr;
        case Token::Broken:
            return m_scanner.Reason();
        case Token::End:
            return !m_open.empty() ? "the document ends inside an element" : !m_hasRoot ? "no root element" : nullptr;
        default:
            return nullptr;
        }
    }

    char const *TakeElement(bool isOpen) {
        auto const begin = static_cast<std::uint32_t>(m_scanner.Begin());
        if (m_open.empty()) {
            if (m_hasRoot)
                return kOutside;
            m_hasRoot = true;
            m_document.m_root = begin;
            m_document.m_rootEnd = m_scanner.At();
        } else {
            OpenElement &parent = m_open.back();
            if (parent.extent == nullptr)
                parent.extent = &m_document.m_extents.emplace_back(Extent{.begin = parent.begin});
            if (++m_elements * sizeof(XMLNode) + m_document.m_extents.size() * sizeof(Extent) > m_room)
                return "more elements than 256 MB of memory hold";
        }
        if (m_open.size() + 1 > static_cast<std::size_t>(kDeepestXml))
            return "elements nested deeper than 1024 levels";
        if (isOpen)
            m_open.push_back({.name = m_scanner.Name(), .begin = begin});
        return nullptr;
    }

    char const *TakeEnd() {
        if (m_open.empty() || m_open.back().name != m_scanner.Name())
            return "an end tag without its start tag";
        if (Extent *const extent = m_open.back().extent)
            extent->end = static_cast<std::uint32_t>(m_scanner.At());
        m_open.pop_back();
        if (m_open.empty())
            m_document.m_rootEnd = m_scanner.At();
        return nullptr;
    }

    static_assert(kDeepestXml == 1024);
    static constexpr char const *kOutside = "content outside the root element";

    XMLDocument &m_document;
    XMLScanner m_scanner;
    std::vector<OpenElement> m_open{};
    std::size_t m_elements = 0;
    std::size_t const m_room = kMostXmlMemory - m_document.m_text.size();
    bool m_hasRoot = false;
};

std::shared_ptr<XMLDocument> XMLDocument::Check(DString text, DString &reason) {
    if (HoldsNul(text)) {
        reason = "holds a NUL character";
        return nullptr;
    }
    std::shared_ptr<XMLDocument> document(new XMLDocument);
    document->m_text = std::move(text);
    Checker checker(*document);
    if (char const *const wrong = checker.Run()) {
        std::string_view before = document->Text().substr(0, checker.At());
        if (checker.At() == document->m_text.size()) // the end of the last line is not the next one
            before = before.substr(0, before.find_last_not_of(" \t\r\n") + 1);
        reason = Format("line %d: %s", static_cast<int>(1 + std::count(before.begin(), before.end(), '\n')), wrong);
        return nullptr;
    }
    return document;
}

std::size_t XMLDocument::EndOf(std::uint32_t element) const {
    auto const found = std::lower_bound(m_extents.begin(), m_extents.end(), element,
                                        [](Extent const &extent, std::uint32_t begin) { return extent.begin < begin; });
    return found->end;
}

std::string_view XMLDocument::NameOf(std::uint32_t element) const { return XmlNameAt(Text().substr(element + 1)); }

XMLAttributeScanner XMLDocument::ScanAttributes(std::uint32_t element) const {
    return XMLAttributeScanner(Text().substr(element + 1 + NameOf(element).size()));
}

std::optional<DString> XMLDocument::AttributeOf(std::uint32_t element, std::string_view name) const {
    for (XMLAttributeScanner attributes = ScanAttributes(element); attributes.Next();)
        if (attributes.Name() == name)
            return XmlValueOf(attributes.Raw());
    return std::nullopt;
}

std::vector<XMLAttribute> XMLDocument::AttributesOf(std::uint32_t element) const {
    std::vector<XMLAttribute> found;
    for (XMLAttributeScanner attributes = ScanAttributes(element); attributes.Next();)
        found.push_back({.name = DString(attributes.Name()), .value = XmlValueOf(attributes.Raw())});
    return found;
}

// --- the nodes ---

namespace {

constexpr std::size_t kPageBytes = 4096; // of so many a node finds its page
constexpr std::size_t kMostPages = 256;  // in a block

} // namespace

struct XMLDocument::Page {
    static constexpr std::size_t kHead = 16;
    static constexpr std::uint32_t kNodes = (kPageBytes - kHead) / sizeof(XMLNode);

    XMLDocument *document = nullptr;
    std::uint32_t first = 0; ///< index of its first node

    [[nodiscard]] static Page &Of(XMLNode const &node) {
        auto *const bytes = reinterpret_cast<char *>(const_cast<XMLNode *>(&node));
        return *reinterpret_cast<Page *>(bytes - reinterpret_cast<std::uintptr_t>(bytes) % kPageBytes);
    }
    [[nodiscard]] XMLNode *Nodes() { return reinterpret_cast<XMLNode *>(reinterpret_cast<char *>(this) + kHead); }
};

XMLDocument::~XMLDocument() {
    // The nodes in them are plain places, or gone: one that was changed keeps this document alive.
    for (void *const block : m_blocks)
        std::free(block);
}

XMLDocument &XMLDocument::Of(XMLNode const &node) { return *Page::Of(node).document; }

std::uint32_t XMLDocument::IndexOf(XMLNode const &node) {
    Page &page = Page::Of(node);
    return page.first + static_cast<std::uint32_t>(&node - page.Nodes());
}

XMLNode *XMLDocument::At(std::uint32_t index) const {
    if (index == kTopNode)
        return m_top;
    std::uint32_t const place = index - 1;
    return m_pages[place / Page::kNodes]->Nodes() + place % Page::kNodes;
}

void XMLDocument::AddPages() {
    std::size_t const count = std::clamp<std::size_t>(m_pages.size(), 1, kMostPages);
    m_blocks.reserve(m_blocks.size() + 1);
    void *const block = std::aligned_alloc(kPageBytes, count * kPageBytes);
    if (block == nullptr)
        throw std::bad_alloc();
    m_blocks.push_back(block);
    for (std::size_t i = 0; i < count; ++i) {
        Page *const page = new (static_cast<char *>(block) + i * kPageBytes) Page;
        page->document = this;
        page->first = static_cast<std::uint32_t>(m_pages.size()) * Page::kNodes + 1;
        m_pages.push_back(page);
    }
}

XMLNode *XMLDocument::Append(std::uint32_t parent, std::uint32_t element) {
    if (m_nodeCount == m_pages.size() * Page::kNodes)
        AddPages();
    ++m_nodeCount;
    return ::new (At(m_nodeCount)) XMLNode(parent, element);
}

std::uint32_t XMLDocument::MakeChildren(std::uint32_t element, std::uint32_t parent) {
    std::uint32_t const first = m_nodeCount + 1;
    XMLNode *last = nullptr;
    for (XMLContent content(*this, element); content.Next();)
        if (content.IsElement())
            last = Append(parent, content.Element());
    if (last == nullptr)
        return kNoNode;
    last->m_place |= XMLNode::kLast;
    return first;
}

} // namespace zelvar
