#pragma once

#include "zelvar/data/gdal/Formats.h"
#include "zelvar/data/tables/ADIDriver.h"

namespace zelvar::gdal {

/// Table driver over one of GDAL's formats. All of them are one family.
class TableDriver : public ADIDriver {
public:
    explicit TableDriver(Format const &format) : m_format(format) {}

    [[nodiscard]] DString GetId() const override { return m_format.id; }
    [[nodiscard]] DString GetInfo() const override { return m_format.name; }
    [[nodiscard]] DString GetExtensions() const override { return m_format.extensions; }
    [[nodiscard]] DString GetFamily() const override { return "GDAL"; }

    void *OpenTable(BDIMoniker const &moniker, StopSignal const *stop, DError *error) override;
    void *OpenTableInFamily(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop,
                            DError *error) override;
    void CloseTable(void *handle) override;
    [[nodiscard]] std::vector<ADIColumn> const &GetColumns(void *handle) const override;
    [[nodiscard]] DString GetEncoding(void *handle) const override;
    bool ReadRows(void *handle, std::int64_t first, int most, ADIRows &rows) override;
    [[nodiscard]] bool KeepsPlaces(void *handle) const override;
    bool CountRows(void *handle, std::int64_t rows, TableExtent &known, DError *error) override;
    bool PickRows(void *handle, TableExtent const &known, std::vector<std::int64_t> const &wanted, ADIRows &rows,
                  DError *error) override;
    bool SortRows(void *handle, TableExtent const &known, int column, bool ascending, RowOrder &order,
                  DError *error) override;

private:
    Format const &m_format; ///< the catalogue's
};

} // namespace zelvar::gdal
