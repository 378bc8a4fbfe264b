#pragma once

#include "zelvar/base/DString.h"
#include "zelvar/base/Percent.h"

#include <memory>
#include <utility>
#include <vector>

namespace zelvar {

class BDIDrvr;
class BDINode;

/// Block data interface moniker: the text that names a data item for good: a path, an address, or a node inside a
/// container, and behind "?" options as "name=value&name=value".
///
/// A file whose own name holds "?" is told by looking: the longest prefix that exists on disk is the file; its options
/// may stand behind "?" or "&". The questions below look at the disk only where the text leaves no other way. What is
/// yet to be written cannot be told so: see `OfPath`.
class ZELVAR_API BDIMoniker {
public:
    BDIMoniker() = default;
    /// A password in an address is taken out of it and remembered for this process: a moniker never holds one.
    BDIMoniker(DString text, BDIDrvr *driver);
    /// That of a path on disk, whatever it holds and whether anything is there; `options` as for `WithOptions`, but
    /// behind a "?" of the path's they follow an "&".
    [[nodiscard]] static BDIMoniker OfPath(DString path, DString const &options, BDIDrvr *driver);

    [[nodiscard]] DString const &GetText() const { return m_text; }
    [[nodiscard]] BDIDrvr *GetDrvr() const { return m_driver; } ///< may be null; the manager's
    void SetDrvr(BDIDrvr *driver);                              ///< the node is closed if it is another's
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
    [[nodiscard]] DString FindFile() const;
    /// `FindFile`, and for a plain path where nothing is yet that path: what is written there overwrites nothing else.
    [[nodiscard]] DString GetPathOnDisk() const;
    /// True for an address on the network and for a node inside such a thing. "file://" is none.
    [[nodiscard]] bool IsUrl() const;
    /// What a user knows the item by, and lists are sorted by: the name of its file, and for a node inside a container
    /// a blank and the node's name behind it. For an address its last element, decoded; for what lies in a map service
    /// its name there.
    [[nodiscard]] DString GetDisplayName() const;
    /// The extension of the file behind the moniker, with or without its dot; empty if it has none.
    [[nodiscard]] DString GetFrmtExtn(bool withDot) const;

    /// The node that the moniker opens as, opened at the first question by the driver; null if there is none. A moniker
    /// without a driver takes the first that reads the file as several images or tables. The moniker and its copies
    /// share the node; it stays until the last is closed or gone. May wait as long as a request to a driver may.
    [[nodiscard]] BDINode const *GetNode() const;
    /// The repository of `GetNode`, for calls of `GetDrvr`; null without a node.
    [[nodiscard]] void *GetRepository() const;
    /// Forgets the node; the next `GetNode` opens it again.
    void CloseNode() { m_opened.reset(); }

    friend bool operator==(BDIMoniker const &a, BDIMoniker const &b) { return a.m_text == b.m_text; }

private:
    struct Opened;
    /// Where the options begin: the position of what stands before them, or the text's length.
    [[nodiscard]] std::size_t SourceLength() const;

    DString m_text;
    std::size_t m_pathLength = 0;             ///< how much of the text is known for a path; 0 if that is not known
    mutable BDIDrvr *m_driver = nullptr;      ///< not owned
    mutable std::shared_ptr<Opened> m_opened; ///< set once it has been tried
};

} // namespace zelvar
