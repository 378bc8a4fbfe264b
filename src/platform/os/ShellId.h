#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/RefItem.h"

#include <cstdint>

namespace zelvar::platform {

/// What a place or thing in the shell namespace is. The numbers are the description ids that callers name in sets.
enum class ShellKind : std::int32_t {
    Unknown = 0,
    File = 2,      ///< a plain file
    Directory = 3, ///< a folder of a file system
    Removable = 7, ///< drives ...
    Fixed = 8,
    NetDrive = 9,
    CdRom = 10,
    NetDomain = 13, ///< network places ...
    NetServer = 14,
    NetShare = 15,
    NetRestOfNet = 16,
    NetOther = 17,
    Virtual = 100, ///< the desktop, the computer's drives place, the network place
};

/// Absolute identifier of a thing in the shell namespace: a chain of elements from the desktop down. A value; copies
/// share the chain, so a listing of 100,000 children costs one small element each. Any thread.
class ZELVAR_API ShellId {
public:
    ShellId() = default; ///< null
    [[nodiscard]] static ShellId Desktop();
    /// The identifier of a child of this one. `element` is the bytes that the namespace knows the child by.
    [[nodiscard]] ShellId Child(std::string_view element, ShellKind kind) const;

    [[nodiscard]] bool IsNull() const { return m_node == nullptr; }
    [[nodiscard]] bool IsDesktop() const;
    /// Without its last element; null for the desktop and for null.
    [[nodiscard]] ShellId Parent() const;
    /// Lives as long as any identifier that holds the element.
    [[nodiscard]] std::string_view Element() const;
    /// What the thing was when the identifier was made.
    [[nodiscard]] ShellKind Kind() const;
    [[nodiscard]] int Depth() const; ///< 0 for the desktop

    /// Same chain of elements.
    friend ZELVAR_API bool operator==(ShellId const &a, ShellId const &b);

private:
    class Node;
    explicit ShellId(Node *node);
    [[nodiscard]] Node const *Get() const;

    RefItemPtr<RefItem> m_node;
};

} // namespace zelvar::platform
