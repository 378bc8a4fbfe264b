#pragma once

#include "zelvar/xml/XMLNode.h"
#include "zelvar/xml/XMLPiece.h"
#include "zelvar/xml/XMLScanner.h"

#include <deque>
#include <optional>

namespace zelvar {

/// A document that was loaded: its checked text, and the elements of it that somebody has looked at.
///
/// The text is kept as it was read. An element that nobody has changed is a small `XMLNode` that knows where in the
/// text it begins, its parent and its first child; its brothers lie beside it. They are made when the children of an
/// element are first asked for. An element is named here by the place of its "<" in the text.
///
/// Kept alive by the pieces of the nodes that were changed, and by the root's.
class XMLDocument {
public:
    /// A document of UTF-8; null and why not ("line 3: ...") if it is not whole or breaks a limit.
    [[nodiscard]] static std::shared_ptr<XMLDocument> Check(DString text, DString &reason);
    ~XMLDocument();
    XMLDocument(XMLDocument const &) = delete;
    XMLDocument &operator=(XMLDocument const &) = delete;

    [[nodiscard]] std::string_view Text() const { return m_text; }
    [[nodiscard]] std::uint32_t Root() const { return m_root; }
    [[nodiscard]] std::size_t RootEnd() const { return m_rootEnd; }
    /// Behind the end tag of an element that has children.
    [[nodiscard]] std::size_t EndOf(std::uint32_t element) const;

    [[nodiscard]] std::string_view NameOf(std::uint32_t element) const;
    [[nodiscard]] std::optional<DString> AttributeOf(std::uint32_t element, std::string_view name) const;
    [[nodiscard]] XMLAttributeScanner ScanAttributes(std::uint32_t element) const;
    [[nodiscard]] std::vector<XMLAttribute> AttributesOf(std::uint32_t element) const;

    // --- the nodes ---

    /// The node that stands for the root of the document; it makes itself known here.
    void SetTop(XMLNode *top) { m_top = top; }
    [[nodiscard]] static XMLDocument &Of(XMLNode const &node); ///< of one that is kept here
    [[nodiscard]] static std::uint32_t IndexOf(XMLNode const &node);
    [[nodiscard]] static std::uint32_t PlaceOf(XMLNode const &node) { return node.Place(); }
    [[nodiscard]] XMLNode *At(std::uint32_t index) const;
    /// Makes the nodes of an element's children, whose parent has that index. Gives the index of the first, or
    /// `kNoNode`; the others follow.
    [[nodiscard]] std::uint32_t MakeChildren(std::uint32_t element, std::uint32_t parent);

    static constexpr std::uint32_t kTopNode = 0; ///< index of the root, which is not kept here
    static constexpr std::uint32_t kNotMade = 0; ///< for the first child: has not been asked for
    static constexpr std::uint32_t kNoNode = UINT32_MAX;

private:
    class Checker;
    struct Extent {
        std::uint32_t begin = 0;
        std::uint32_t end = 0;
    };
    struct Page;

    XMLDocument() = default;
    XMLNode *Append(std::uint32_t parent, std::uint32_t element);
    void AddPages();

    DString m_text{};
    std::uint32_t m_root = 0;
    std::size_t m_rootEnd = 0;
    std::deque<Extent> m_extents{}; ///< of the elements that have children, by their begin
    XMLNode *m_top = nullptr;       ///< not owned
    std::vector<void *> m_blocks{}; ///< of pages, owned
    std::vector<Page *> m_pages{};
    std::uint32_t m_nodeCount = 0;
};

} // namespace zelvar
