#pragma once

#include "zelvar/base/DString.h"

#include <utility>
#include <vector>

namespace zelvar {

class BDIDrvr;

/// Block data interface moniker: the text that names a data item for good: a path, an address, or a node inside a
/// container, and behind "?" options as "name=value&name=value".
///
/// A file whose own name holds "?" is told by looking: the longest prefix that exists on disk is the file.
class ZELVAR_API BDIMoniker {
public:
    BDIMoniker() = default;
    BDIMoniker(DString text, BDIDrvr *driver) : m_text(std::move(text)), m_driver(driver) {}

    [[nodiscard]] DString const &GetText() const { return m_text; }
    [[nodiscard]] BDIDrvr *GetDriver() const { return m_driver; } ///< may be null
    [[nodiscard]] bool IsEmpty() const { return m_text.empty(); }

    /// The text without its options.
    [[nodiscard]] DString GetSource() const;
    /// What stands behind "?", in order; names and values as written.
    [[nodiscard]] std::vector<std::pair<DString, DString>> GetOptions() const;
    /// The path of the file on disk behind the moniker: for a node inside a container the container's. Empty for an
    /// address on the network.
    [[nodiscard]] DString GetPathOnDisk() const;
    [[nodiscard]] bool IsUrl() const;

    friend bool operator==(BDIMoniker const &a, BDIMoniker const &b) { return a.m_text == b.m_text; }

private:
    DString m_text;
    BDIDrvr *m_driver = nullptr; ///< not owned; the manager's
};

} // namespace zelvar
