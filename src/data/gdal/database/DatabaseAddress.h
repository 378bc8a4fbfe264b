#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/Connection.h"

#include <optional>
#include <set>

namespace zelvar::gdal {

/// What an address names in the database of a connection: all of it, a schema, a table or a raster column of one. All
/// parts are the bytes that they stand for.
///
/// The text is the address of the connection with the encoded names behind it,
/// "postgresql://zelvar@db.lab/field/survey" and "postgresql://zelvar@db.lab/field/images/height?COLUMN=rast".
struct DatabaseAddress {
    DString connection{}; ///< the address of the connection, as its definition has it
    DString schema{};     ///< empty for all
    DString table{};      ///< empty for all of the schema
    DString column{};     ///< of rasters; empty for none in particular

    /// Nothing, with the reason in `*error` (may be null), unless the address lies in the connection. How its server is
    /// written is not looked at: who asks has found the connection by it.
    [[nodiscard]] static std::optional<DatabaseAddress> In(ConnectionTerms const &terms, std::string_view address,
                                                           DError *error);
    [[nodiscard]] DString ToText() const;
    /// Its last name, as users know it.
    [[nodiscard]] DString Name() const;
};

/// The terms of the connection to a database of that kind that this process reads for; null if it does not.
[[nodiscard]] ConnectionTerms const *OwnDatabase(ConnectionKind kind);
/// What an address names there. Nothing where this process reads for no such connection: the reason is told for an
/// address of that kind.
[[nodiscard]] std::optional<DatabaseAddress> InOwnDatabase(ConnectionKind kind, std::string_view address,
                                                           DError *error);
/// What drivers of that kind of database are called, and what users read of them.
[[nodiscard]] char const *DatabaseId(ConnectionKind kind);
[[nodiscard]] char const *DatabaseInfo(ConnectionKind kind);
/// The schemas that such a connection keeps to; none for all.
[[nodiscard]] std::set<DString> WantedSchemas(ConnectionTerms const *terms);

} // namespace zelvar::gdal
