#pragma once

#include "zelvar/data/tables/ADIDriver.h"
#include "zelvar/data/wire/Messages.h"

namespace zelvar {

/// A table driver that lives in the readers. Rows come in batches; a reader that is lost loses no table, the next one
/// opens it again and goes to the row.
class RemoteTableDriver : public ADIDriver {
public:
    explicit RemoteTableDriver(wire::DriverFactsT facts) : m_facts(std::move(facts)) {}

    [[nodiscard]] DString GetId() const override { return m_facts.id; }
    [[nodiscard]] DString GetInfo() const override { return m_facts.info; }
    [[nodiscard]] DString GetExtensions() const override { return m_facts.extensions; }
    [[nodiscard]] DString GetFamily() const override { return m_facts.family; }
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
    void *Open(BDIMoniker const &moniker, ADIDriver **opener, StopSignal const *stop, DError *error, bool family);

    wire::DriverFactsT m_facts;
};

} // namespace zelvar
