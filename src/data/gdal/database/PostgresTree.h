#pragma once

#include "zelvar/data/gdal/Tree.h"
#include "zelvar/data/gdal/database/DatabaseAddress.h"
#include "zelvar/data/gdal/database/PostgresCatalogue.h"

#include <chrono>
#include <set>
#include <unordered_map>

namespace zelvar::gdal {

/// A database, or a schema or table of it: schemas, and in them tables, vector layers and rasters.
///
/// Schemas are listed by one statement, the tables of the first one that is entered by another; with the second one
/// come those of all schemas, for who goes through them one by one: a walk through 200 schemas costs three statements.
class PostgresTree : public Tree {
public:
    /// Null, with the reason in `error`, if it cannot be listed.
    [[nodiscard]] static std::unique_ptr<Tree> Open(DatabaseAddress address, DError &error);
    [[nodiscard]] BDINode Root() const override { return m_root; }
    [[nodiscard]] std::optional<BDINode> Find(DString const &path) const override;
    [[nodiscard]] std::vector<BDINode> Children(BDINode const &parent) const override;
    [[nodiscard]] DError ChildrenError() const override { return m_error; }

private:
    enum class Overviews { LeftOut, Too }; ///< too, where somebody names one
    explicit PostgresTree(DatabaseAddress address);
    [[nodiscard]] std::vector<BDINode> ListSchemas() const;
    [[nodiscard]] std::vector<BDINode> ListTables(DString const &schema) const;
    [[nodiscard]] std::vector<PostgresRelation> TablesOf(DString const &schema) const;
    [[nodiscard]] std::vector<BDINode> NodesOf(PostgresRelation const &table, Overviews overviews) const;
    [[nodiscard]] BDINode SchemaNode(DString const &schema) const;

    using Clock = std::chrono::steady_clock;
    DatabaseAddress m_address;
    PostgresCatalogue m_catalogue;
    BDINode m_root;
    bool m_withPlainTables = true;
    // One thread at a time uses a tree.
    mutable std::optional<std::vector<BDINode>> m_listedRoot; ///< that opening has brought
    mutable std::int64_t m_tables = 0;                        ///< of all schemas, as they were listed last
    mutable std::set<DString> m_entered;                      ///< schemas, since then
    mutable std::unordered_map<DString, std::vector<PostgresRelation>> m_ahead; ///< of schemas not entered yet
    mutable Clock::time_point m_aheadSince{};
    mutable std::unordered_map<DString, BDINode> m_found;
    mutable DError m_error; ///< of the last listing
};

} // namespace zelvar::gdal
