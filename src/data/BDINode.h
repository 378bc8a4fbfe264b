#pragma once

#include "zelvar/base/DString.h"

#include <cstdint>

namespace zelvar {

/// Bits of `BDINode::type`.
enum BDINodeType : std::uint32_t {
    BDINode_Container = 0x01, ///< holds other nodes
    BDINode_Raster = 0x02,
    BDINode_Thematic = 0x04,   ///< vector layer
    BDINode_Table = 0x08,      ///< table or metadata
    BDINode_Folder = 0x10,     ///< counts for data as well, and has its picture
    BDINode_Directory = 0x400, ///< beside `BDINode_Container`: a folder of files, no file that holds nodes
};

/// The type of folders that our own drivers tell.
inline constexpr std::uint32_t kDirectoryNode = BDINode_Container | BDINode_Directory;

/// A driver's record of one node of a tree. Made by the driver's `OpenNode`, `CloneNode` and find calls, released by
/// its `CloseNode`.
class ZELVAR_API BDINode {
public:
    BDINode() = default;
    BDINode(BDINode const &) = default;
    BDINode(BDINode &&) = default;
    BDINode &operator=(BDINode const &) = default;
    BDINode &operator=(BDINode &&) = default;
    virtual ~BDINode() = default;

    std::uint32_t type = 0;    ///< `BDINodeType` bits
    DString path;              ///< opens the node again; for a data item also its moniker
    DString name;              ///< what the user sees
    DString value;             ///< filter nodes: one filter's configuration; others: what is known of it, in words
    std::int64_t size = -1;    ///< bytes of what is a file; -1 if that is not known
    std::int64_t modified = 0; ///< nanoseconds since 1970; 0 if that is not known
};

} // namespace zelvar
