#pragma once

#include "zelvar/settings/RegistryKey.h"
#include "zelvar/settings/RegistryValue.h"

namespace zelvar {

class XMLNode;

/// Registry snapshot: reads and writes values of any type as raw bytes, and turns a key with all below it into a tree
/// of XML and back.
///
/// An element "RegKey" a key with the attribute `path`; in it an element "RegValue" a value with `path` (its name),
/// `type`, `size` in bytes and the data as text, then an element "RegKey" a subkey. A path, name or text that no XML
/// can hold stands in hexadecimal (`XMLNode::SetSafeAttr`, `XMLNode::SetSafeText`). No operation tells the user
/// anything.
class ZELVAR_API ZelRegistry : public RegistryKey {
public:
    using RegistryKey::RegistryKey;

    /// With one "\" at its end, whatever it had.
    void SetRoot(DString const &root);
    [[nodiscard]] DString const &GetRoot() const { return m_root; } ///< empty at first

    /// Non-zero on success. `*data` is new, the caller's to `delete[]`; null on failure and for a value without bytes.
    int ReadAny(char const *name, unsigned char **data, unsigned long *size);
    /// Non-zero on success; never for a read-only object. `data` may be null for a size of 0.
    int WriteAny(char const *name, unsigned long type, unsigned char const *data, unsigned long size);

    /// The current key as a tree, the caller's. Null if no key is open. Attribute `path` is the key's path less all its
    /// leading characters that occur anywhere in the root, which counts as a set of characters, not as a prefix: with
    /// the root "Software\", "Software\Settings" becomes "ings". Keys below the 1,100th level are left out: a tree
    /// that deep is not written as XML either.
    [[nodiscard]] XMLNode *ToXMLNode() const;
    /// Makes the key that the root and the tree's path give, with all that the tree says; what is there besides stays.
    /// False if anything of it failed; the rest is done nonetheless.
    bool FromXMLNode(XMLNode *node);

    /// Whether `FromXMLNode` would understand all of the tree, which may come from anywhere: named as above, each
    /// value's type and size told, its text what they say, no more than 256 MB together. If not, why.
    [[nodiscard]] static bool IsSnapshot(XMLNode const &node, DString *reason);

private:
    [[nodiscard]] XMLNode *ToXMLNode(int level) const;
    [[nodiscard]] bool FromXMLValue(XMLNode const &node);
    [[nodiscard]] bool Write(DString const &name, RegistryValue const &value);

    DString m_root{};
};

} // namespace zelvar
