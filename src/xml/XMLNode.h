#pragma once

#include "zelvar/base/DString.h"

#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>

namespace zelvar {

class DFile;
class XMLDocument;
struct XMLPiece;

/// Element of an XML tree in memory: name, attributes, text, children; knows its parent, next sibling, first child.
///
/// Comments and whatever else stands between elements are not shown, but a load and a save keep them.
/// A node without a parent is a root and owns its whole tree; whoever made it deletes it. A child is owned by its
/// parent. One thread at a time per tree.
class ZELVAR_API XMLNode {
public:
    /// An element of that name without a parent. The empty name serves for a node that is about to `Load`.
    explicit XMLNode(DString const &name = {});
    ~XMLNode();
    XMLNode(XMLNode const &) = delete;
    XMLNode &operator=(XMLNode const &) = delete;
    /// Nodes of a loaded tree lie together and give back their memory with it.
    static void *operator new(std::size_t size);
    static void operator delete(void *memory); ///< of one that could not be made
    static void operator delete(XMLNode *node, std::destroying_delete_t);

    /// Replaces this root by the file's tree. False, and this node unchanged, if the file cannot be read or does not
    /// parse to its end: never half a tree. `error` then tells file, line and reason. External entities are never
    /// fetched; document types with entity declarations, trees deeper than 1,024 levels, files above 85 MB and those
    /// that would take more than 256 MB of memory are refused. UTF-16, UTF-32 and declared encodings of one byte a
    /// character become UTF-8. Fails on a node that has a parent.
    bool Load(DFile const &file, DString *error = nullptr);
    bool LoadText(std::string_view text, DString *error = nullptr);
    /// Writes the tree as UTF-8, atomically: the former file stays until the new one is complete on disk. With
    /// `backup` the former file is kept beside it as "<name>.bak". False leaves the former file as it was; so does a
    /// tree with a name or a character that cannot stand in XML, bytes that are no UTF-8, or two attributes of one
    /// name: its `SaveText` is empty, and `error` tells why.
    bool Save(DFile const *file, bool backup) const;
    [[nodiscard]] DString SaveText(DString *error = nullptr) const;

    [[nodiscard]] DString GetName() const;
    void SetName(DString const &name);

    [[nodiscard]] bool HasAttr(char const *name) const;
    /// The attribute's value, or `fallback` if there is none.
    [[nodiscard]] DString GetAttrStr(char const *name, DString const &fallback = {}) const;
    /// "1", "true", "yes", "on" are true, "0", "false", "no", "off" false, in any case; anything else is `fallback`.
    [[nodiscard]] bool GetAttrBool(char const *name, bool fallback) const;
    [[nodiscard]] long long GetAttrInt(char const *name, long long fallback = 0) const;
    [[nodiscard]] unsigned GetAttrUnt(char const *name, unsigned fallback = 0) const;
    [[nodiscard]] double GetAttrDouble(char const *name, double fallback = 0) const;
    void SetAttr(char const *name, DString const &value);
    void SetAttrBool(char const *name, bool value);
    void SetAttrInt(char const *name, long long value);

    /// The text directly inside the element, all pieces joined.
    [[nodiscard]] DString GetText() const;
    void SetText(DString const &text);
    /// Text that may hold any bytes: what cannot stand in XML as it is (control characters, invalid UTF-8) stands as
    /// `HexEncode` of the bytes, with the attribute "encoding" set to "hex".
    void SetSafeText(DString const &bytes);
    [[nodiscard]] DString GetSafeText() const; ///< empty if the encoding is broken
    /// The same for an attribute, set once; one that cannot stand as it is is called `name` + "Hex".
    void SetSafeAttr(DString const &name, DString const &bytes);
    [[nodiscard]] DString GetSafeAttr(DString const &name) const;

    [[nodiscard]] XMLNode *GetParent() const;
    [[nodiscard]] XMLNode *GetNext() const;       ///< next sibling, or null
    [[nodiscard]] XMLNode *GetFirstChild() const; ///< or null
    /// The first child of that name, or null.
    [[nodiscard]] XMLNode *GetChldNode(char const *name) const;
    [[nodiscard]] int GetChldCount() const;

    /// Appends `child`, a root until now, and takes it over. Null when `child` is null or has a parent.
    XMLNode *AddChld(XMLNode *child);
    /// The same; one that is refused is deleted.
    XMLNode *AddChld(std::unique_ptr<XMLNode> child);
    XMLNode *AddChld(DString const &name);
    /// Takes a child of this node out of the tree; it is a root then, and the caller's. Null if it is none.
    [[nodiscard]] std::unique_ptr<XMLNode> TakeChld(XMLNode *child);
    /// Removes and deletes a child of this node. False if it is none.
    bool DelChld(XMLNode *child);

    /// A deep copy without a parent, owned by the caller.
    [[nodiscard]] std::unique_ptr<XMLNode> Copy() const;

    /// Walk over the children that allows removal of the current one.
    class ZELVAR_API ChldItr {
    public:
        explicit ChldItr(XMLNode &parent) : m_parent(parent), m_current(parent.GetFirstChild()) {}
        [[nodiscard]] bool IsValid() const { return m_current != nullptr; }
        [[nodiscard]] XMLNode *Get() const { return m_current; }
        void Next() { m_current = m_current->GetNext(); }
        /// Deletes the current child and stands on the next one.
        void Rmv();

    private:
        XMLNode &m_parent;
        XMLNode *m_current;
    };

private:
    friend class XMLDocument;
    friend struct XMLPiece;

    static constexpr std::uint32_t kHasPiece = 1U << 31U;
    static constexpr std::uint32_t kIsKept = 1U << 30U; ///< lies in the memory of its document
    static constexpr std::uint32_t kLast = 1U << 29U;   ///< of its brothers, which lie one behind the other
    static constexpr std::uint32_t kPlaceMask = kLast - 1;

    /// A place in a loaded document.
    XMLNode(std::uint32_t parent, std::uint32_t place) : m_links{parent, 0}, m_place(place | kIsKept) {}
    [[nodiscard]] XMLPiece *Piece() const;
    void SetPiece(XMLPiece *piece);
    [[nodiscard]] std::uint32_t Place() const { return m_place & kPlaceMask; }
    [[nodiscard]] bool TakeText(DString text, DString &reason);
    [[nodiscard]] std::optional<DString> FindAttr(char const *name) const;
    [[nodiscard]] bool HasAsTop(XMLNode const &top) const;

    // A loaded document may have a node for each four bytes: every byte counts.
    using Links = std::array<std::uint32_t, 2>;
    mutable Links m_links{};   ///< the piece's address, owned; else indices of parent, first child
    std::uint32_t m_place = 0; ///< byte in the document, and what the bits above say
};

} // namespace zelvar
