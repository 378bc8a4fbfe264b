#pragma once

#include "zelvar/base/DString.h"

#include <utility>
#include <vector>

namespace zelvar {

class BDIDrvr;

/// Block data interface moniker: the text that names a data item for good: a path, an address, or a node inside a
/// container, and behind "?" options as "name=value&name=value".
///
/// A file whose own name holds "?" is told by looking: the longest prefix that exists on disk is the file. The
/// questions below look at the disk only where the text leaves no other way.
class ZELVAR_API BDIMoniker {
public:
    BDIMoniker() = default;
    BDIMoniker(DString text, BDIDrvr *driver) : m_text(std::move(text)), m_driver(driver) {}

    [[nodiscard]] DString const &GetText() const { return m_text; }
    [[nodiscard]] BDIDrvr *GetDriver() const { return m_driver; } ///< may be null
    [[nodiscard]] bool IsEmpty() const { return m_text.empty(); }

    /// The text without its options.
    [[nodiscard]] DString GetSource() const;
    /// What stands behind "?", in order; names and values as written. A piece without "=" is a name with an empty
    /// value.
    [[nodiscard]] std::vector<std::pair<DString, DString>> GetOptions() const;
    /// This moniker with more options behind its own; `options` as "name=value&name=value", may be empty.
    [[nodiscard]] BDIMoniker WithOptions(DString const &options) const;
    /// The path of the file on disk behind the moniker: for a node inside a container the container's. Empty for an
    /// address on the network, and if nothing is there.
    [[nodiscard]] DString GetPathOnDisk() const;
    /// True for an address on the network and for a node inside such a thing. "file://" is none.
    [[nodiscard]] bool IsUrl() const;

    friend bool operator==(BDIMoniker const &a, BDIMoniker const &b) { return a.m_text == b.m_text; }

private:
    /// Where the options begin: the position of "?", or the text's length.
    [[nodiscard]] std::size_t SourceLength() const;

    DString m_text;
    BDIDrvr *m_driver = nullptr; ///< not owned; the manager's
};

/// "%41" becomes "A"; what is no such escape stays.
[[nodiscard]] ZELVAR_API DString PercentDecoded(std::string_view text);
/// Bytes other than letters, digits and "-._~" as "%HH"; with `keepSlashes` "/" stays as well.
[[nodiscard]] ZELVAR_API DString PercentEncoded(std::string_view text, bool keepSlashes = false);

} // namespace zelvar
