#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/StopSignal.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zelvar::gdal {

/// A schema of a database that its user may use.
struct PostgresSchema {
    DString name{};
    std::int64_t tables = 0; ///< and views that its user may read
};

/// A table, view or foreign table that its user may read. Those of extensions are none.
struct PostgresRelation {
    struct Column {
        DString name{};
        bool isRaster = false;   ///< else a geometry
        bool isOverview = false; ///< of the raster of another table
    };
    DString schema{};
    DString name{};
    char kind = 'r';               ///< as the catalogue has it: 'r', 'p' tables, 'v', 'm' views, 'f' foreign ones
    std::int64_t rows = -1;        ///< as they were last counted; -1 for never
    std::vector<Column> spatial{}; ///< its columns of geometries and rasters, in their order

    [[nodiscard]] bool HasGeometry() const;
    [[nodiscard]] bool HasRaster() const;
};

/// What is in the database that this reader serves. Each is one statement, however many tables there are; nothing, with
/// the reason in `*error`, if it fails or is stopped.
class PostgresCatalogue {
public:
    /// `subject` is what reasons are about.
    PostgresCatalogue(DString subject, StopSignal const *stop) : m_subject(std::move(subject)), m_stop(stop) {}

    /// By name. Where the connection names schemas those alone.
    [[nodiscard]] std::optional<std::vector<PostgresSchema>> Schemas(DError *error) const;
    /// Of a schema, or of all with an empty name; by schema and name.
    [[nodiscard]] std::optional<std::vector<PostgresRelation>> Tables(DString const &schema, DError *error) const;
    /// Why a schema has no tables for its user; not set where it is there and empty.
    [[nodiscard]] DError WhyNoTables(DString const &schema) const;
    /// Nothing, with the cause, also for one that is not there or may not be read.
    [[nodiscard]] std::optional<PostgresRelation> Table(DString const &schema, DString const &name,
                                                        DError *error) const;

private:
    DString m_subject;
    StopSignal const *m_stop; ///< not owned, may be null
};

} // namespace zelvar::gdal
