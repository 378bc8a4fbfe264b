#include "zelvar/data/gdal/database/PostgresRaster.h"

#include "zelvar/data/gdal/database/DatabaseAddress.h"
#include "zelvar/data/gdal/database/PostgresCatalogue.h"

#include <algorithm>

namespace zelvar::gdal {

namespace {

std::optional<Source> Refuse(DError *error, DString const &reason, DError::Cause cause) {
    if (error != nullptr)
        error->Set(reason, cause);
    return std::nullopt;
}

/// A value in the name that GDAL takes apart.
DString Value(char const *key, DString const &value) { return zelvar::Format(" %s='%s'", key, value.c_str()); }

DString DatabaseOf(ConnectionTerms const &terms) {
    auto const at = terms.options.find("database");
    return at == terms.options.end() ? DString() : at->second;
}

} // namespace

bool IsReadableRasterName(DString const &name) { return name.find_first_of("'\"\\") == DString::npos; }

bool HasPostgresRasters() { return OwnDatabase(ConnectionKind::PostgreSql) != nullptr; }

std::optional<Source> ResolvePostgresRaster(BDIMoniker const &moniker, StopSignal const *stop, DError *error) {
    ConnectionTerms const *const terms = OwnDatabase(ConnectionKind::PostgreSql);
    auto const address = InOwnDatabase(ConnectionKind::PostgreSql, moniker.GetText(), error);
    if (terms == nullptr || !address)
        return std::nullopt;
    DString const name = "\"" + address->ToText() + "\"";
    if (address->table.empty())
        return Refuse(error, name + " is no image", DError::Cause::NotSupported);
    auto const table = PostgresCatalogue(address->ToText(), stop).Table(address->schema, address->table, error);
    if (!table)
        return std::nullopt;
    std::vector<DString> columns;
    for (PostgresRelation::Column const &column : table->spatial)
        if (column.isRaster && (address->column.empty() || column.name == address->column))
            columns.push_back(column.name);
    if (columns.empty() && !address->column.empty())
        return Refuse(error, name + ": there is no such raster", DError::Cause::Missing);
    if (columns.size() != 1)
        return Refuse(error, name + (columns.empty() ? " holds no raster" : " holds several rasters"),
                      DError::Cause::NotSupported);
    for (DString const &part : {DatabaseOf(*terms), table->schema, table->name, columns.front()})
        if (!IsReadableRasterName(part))
            return Refuse(error, name + ": rasters whose names hold a quote or \\ cannot be read",
                          DError::Cause::NotSupported);
    Source source;
    source.text = address->ToText();
    source.reach = Reach::Network;
    source.name = "PG:" + Value("dbname", DatabaseOf(*terms)) + Value("schema", table->schema) +
                  Value("table", table->name) + Value("column", columns.front()) + Value("mode", "2");
    return source;
}

} // namespace zelvar::gdal
