#pragma once

#include "zelvar/data/tables/ADIDriver.h"

namespace zelvar::gdal {

/// Table driver "PostgreSQL": tables, views and the attributes of layers. It opens addresses in readers of a connection
/// to such a database alone. Nothing is ever written.
class PostgresTableDriver : public ADIDriver {
public:
    [[nodiscard]] DString GetId() const override { return "PostgreSQL"; }
    [[nodiscard]] DString GetInfo() const override { return "PostgreSQL database"; }

    void *OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override;
    void CloseTable(void *handle) override;
    [[nodiscard]] std::vector<ADIColumn> const &GetColumns(void *handle) const override;
    bool ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) override;
};

} // namespace zelvar::gdal
