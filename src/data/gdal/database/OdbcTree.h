#pragma once

#include "zelvar/data/gdal/Tree.h"
#include "zelvar/data/gdal/database/DatabaseAddress.h"

#include <map>

namespace zelvar::gdal {

/// An ODBC data source: schemas, and in them tables and views. What has catalogs and no schemas has those for it, and
/// what has neither its tables at once. All are asked for together.
class OdbcTree : public Tree {
public:
    /// Null, with the reason in `error`, if it cannot be listed.
    [[nodiscard]] static std::unique_ptr<Tree> Open(DatabaseAddress const &address, DError &error);
    [[nodiscard]] BDINode Root() const override { return m_root; }
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const override;
    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent) const override;
    [[nodiscard]] DError ChildrenError() const override { return m_error; }

private:
    explicit OdbcTree(DString connection) : m_connection(std::move(connection)) {}
    [[nodiscard]] bool List() const;
    void Add(DString const &schema, DString const &table, DString const &type) const;

    DString m_connection; ///< its address
    BDINode m_root;
    // One thread at a time uses a tree.
    mutable std::map<DString, std::vector<BDINode>> m_children; ///< by the parent's path
    mutable std::map<DString, BDINode> m_nodes;                 ///< by path
    mutable bool m_isFresh = false;                             ///< nobody has seen what was listed
    mutable DError m_error;                                     ///< of the last listing
};

} // namespace zelvar::gdal
