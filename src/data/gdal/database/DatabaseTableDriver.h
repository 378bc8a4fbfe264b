#pragma once

#include "zelvar/data/Connection.h"
#include "zelvar/data/tables/ADIDriver.h"

namespace zelvar::gdal {

/// Table drivers "PostgreSQL" and "ODBC": tables, views and the attributes of layers of databases. Each opens addresses
/// in readers of a connection of its kind alone. Nothing is ever written.
class DatabaseTableDriver : public ADIDriver {
public:
    explicit DatabaseTableDriver(ConnectionKind kind) : m_kind(kind) {}
    [[nodiscard]] DString GetId() const override;
    [[nodiscard]] DString GetInfo() const override;

    void *OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override;
    void CloseTable(void *handle) override;
    [[nodiscard]] std::vector<ADIColumn> const &GetColumns(void *handle) const override;
    bool ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) override;

private:
    ConnectionKind m_kind;
};

} // namespace zelvar::gdal
