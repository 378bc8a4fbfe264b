#pragma once

#include "zelvar/data/gdal/database/DatabaseAddress.h"
#include "zelvar/data/tables/OpenTable.h"

#include <utility>

namespace zelvar::gdal {

/// A table or view of a database, by its address. What its server does not give is no end: it may come the next time.
class DatabaseTable : public OpenTable {
protected:
    DatabaseTable(DatabaseAddress address, StopSignal const *stop) : OpenTable(stop), m_address(std::move(address)) {}
    [[nodiscard]] bool HasFailed() const override { return m_hasFailed; }
    /// False, with the reason in `*error` (may be null), for an address that names no table, as one of a whole schema.
    [[nodiscard]] bool Names(DString const &table, DError *error) const {
        if (table.empty() && error != nullptr)
            error->Set("\"" + m_address.ToText() + "\" is no table", DError::Cause::NotSupported);
        return !table.empty();
    }

    DatabaseAddress m_address;
    bool m_isAtEnd = false;
    bool m_hasFailed = false;
};

} // namespace zelvar::gdal
