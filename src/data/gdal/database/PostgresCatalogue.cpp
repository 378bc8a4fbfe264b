#include "zelvar/data/gdal/database/PostgresCatalogue.h"

#include "zelvar/data/gdal/database/DatabaseAddress.h"
#include "zelvar/data/gdal/database/PostgresSession.h"

#include <algorithm>
#include <set>

namespace zelvar::gdal {

namespace {

/// Tables and views.
constexpr char kAnyTable[] = " where c.relkind in ('r', 'v', 'm', 'f', 'p')";
/// Those of users: no system has them, no extension has brought them along.
constexpr char kOfUsers[] = " and n.nspname !~ '^pg_' and n.nspname <> 'information_schema'"
                            " and not exists (select 1 from pg_catalog.pg_depend d where d.deptype = 'e'"
                            " and d.classid = 'pg_catalog.pg_class'::pg_catalog.regclass and d.objid = c.oid)";
/// Rights are looked up one by one: indexes, of which there are more than tables, are passed over before.
constexpr char kMayBeRead[] = " case when c.relkind in ('r', 'v', 'm', 'f', 'p') then"
                              " pg_catalog.has_schema_privilege(n.oid, 'USAGE')"
                              " and pg_catalog.has_table_privilege(c.oid, 'SELECT') else false end";

DString SchemasStatement() {
    return DString("select n.nspname, count(*) from pg_catalog.pg_class c"
                   " join pg_catalog.pg_namespace n on n.oid = c.relnamespace")
        .append(kAnyTable)
        .append(kOfUsers)
        .append(" and")
        .append(kMayBeRead)
        .append(" group by 1 order by 1");
}

/// A row for each spatial column of a table, or one without.
DString TablesStatement(DString const &condition) {
    return DString("select n.nspname, c.relname, c.relkind, c.reltuples::pg_catalog.int8, a.attname,"
                   " t.typname = 'raster', exists (select 1 from pg_catalog.pg_constraint k where k.conrelid = c.oid"
                   " and k.conname = 'enforce_overview_' || a.attname),")
        .append(kMayBeRead)
        .append(" from pg_catalog.pg_class c join pg_catalog.pg_namespace n on n.oid = c.relnamespace"
                " left join (pg_catalog.pg_attribute a join pg_catalog.pg_type t on t.oid = a.atttypid"
                " and t.typname in ('geometry', 'geography', 'raster'))"
                " on a.attrelid = c.oid and a.attnum > 0 and not a.attisdropped")
        .append(kAnyTable)
        .append(condition)
        .append(" order by n.nspname, c.relname, a.attnum");
}

enum Column { kSchema, kName, kKind, kRows, kSpatial, kIsRaster, kIsOverview, kMayRead };

std::vector<PostgresRelation> RelationsIn(PostgresRows const &rows) {
    std::vector<PostgresRelation> relations;
    for (int row = 0; row < rows.Count(); ++row) {
        bool const isSame = !relations.empty() && relations.back().schema == rows.Text(row, kSchema) &&
                            relations.back().name == rows.Text(row, kName);
        if (!isSame) {
            std::string_view const kind = rows.Text(row, kKind);
            relations.push_back({.schema = DString(rows.Text(row, kSchema)),
                                 .name = DString(rows.Text(row, kName)),
                                 .kind = kind.empty() ? 'r' : kind.front(),
                                 .rows = rows.Number(row, kRows)});
        }
        if (!rows.IsNull(row, kSpatial))
            relations.back().spatial.push_back({.name = DString(rows.Text(row, kSpatial)),
                                                .isRaster = rows.Yes(row, kIsRaster),
                                                .isOverview = rows.Yes(row, kIsOverview)});
    }
    return relations;
}

} // namespace

bool PostgresRelation::HasGeometry() const {
    return std::ranges::any_of(spatial, [](Column const &column) { return !column.isRaster; });
}

bool PostgresRelation::HasRaster() const {
    return std::ranges::any_of(spatial, [](Column const &column) { return column.isRaster; });
}

std::optional<std::vector<PostgresSchema>> PostgresCatalogue::Schemas(DError *error) const {
    PostgresRows const rows = AskCatalogue(m_subject, SchemasStatement().c_str(), {}, m_stop, error);
    if (!rows)
        return std::nullopt;
    std::set<DString> const wanted = WantedSchemas(OwnDatabase(ConnectionKind::PostgreSql));
    std::vector<PostgresSchema> schemas;
    for (int row = 0; row < rows.Count(); ++row)
        if (DString name(rows.Text(row, 0)); wanted.empty() || wanted.contains(name))
            schemas.push_back({.name = std::move(name), .tables = rows.Number(row, 1)});
    return schemas;
}

std::optional<std::vector<PostgresRelation>> PostgresCatalogue::Tables(DString const &schema, DError *error) const {
    DString const readable = DString(kOfUsers).append(" and").append(kMayBeRead);
    DString const statement = TablesStatement(schema.empty() ? readable : readable + " and n.nspname = $1");
    PostgresRows const rows =
        AskCatalogue(m_subject, statement.c_str(),
                     schema.empty() ? std::vector<DString>() : std::vector<DString>{schema}, m_stop, error);
    return rows ? std::optional(RelationsIn(rows)) : std::nullopt;
}

DError PostgresCatalogue::WhyNoTables(DString const &schema) const {
    DError error;
    PostgresRows const rows = AskCatalogue(
        m_subject,
        "select pg_catalog.has_schema_privilege(oid, 'USAGE') from pg_catalog.pg_namespace where nspname = $1",
        {schema}, m_stop, &error);
    DString const shown = "\"" + m_subject + "\": ";
    if (rows && rows.Count() == 0)
        error.Set(shown + "there is no schema " + schema, DError::Cause::Missing);
    else if (rows && !rows.Yes(0, 0))
        error.Set(shown + "the user may not use the schema " + schema, DError::Cause::NotPermitted);
    return error;
}

std::optional<PostgresRelation> PostgresCatalogue::Table(DString const &schema, DString const &name,
                                                         DError *error) const {
    // Whoever names one gets it, an extension's too.
    DString const statement = TablesStatement(" and n.nspname = $1 and c.relname = $2");
    PostgresRows const rows = AskCatalogue(m_subject, statement.c_str(), {schema, name}, m_stop, error);
    if (!rows)
        return std::nullopt;
    DString const shown = "\"" + m_subject + "\": ";
    if (rows.Count() == 0) {
        if (error != nullptr)
            error->Set(shown + "there is no table " + schema + "." + name, DError::Cause::Missing);
        return std::nullopt;
    }
    if (!rows.Yes(0, kMayRead)) {
        if (error != nullptr)
            error->Set(shown + "the user may not read the table " + schema + "." + name, DError::Cause::NotPermitted);
        return std::nullopt;
    }
    return RelationsIn(rows).front();
}

} // namespace zelvar::gdal
