#include "zelvar/reader/OpenTables.h"

#include "zelvar/data/tables/ADIDriverMngr.h"

namespace zelvar::reader {

OpenTables::Table::~Table() {
    if (handle != nullptr)
        driver->CloseTable(handle);
}

OpenTables::Table *OpenTables::Find(wire::TableSpecT const &spec, DError &error) {
    if (Table *const open = m_tables.Find(spec.id); open != nullptr)
        return open;
    auto table = std::make_unique<Table>();
    table->driver = ADIDriverMngr::Instance()->GetDriver(spec.driver.c_str());
    if (table->driver == nullptr) {
        error.Set("no table driver " + spec.driver, DError::Cause::NotSupported);
        return nullptr;
    }
    error.Clear();
    BDIMoniker const moniker(spec.moniker, nullptr);
    ADIDriver &asked = *table->driver;
    table->handle = spec.family ? asked.OpenTableInFamily(moniker, &table->driver, m_stop, &error)
                                : asked.OpenTable(moniker, m_stop, &error);
    if (table->handle == nullptr) {
        if (!error.IsSet())
            error.Set(spec.driver + " does not open " + spec.moniker);
        return nullptr;
    }
    return m_tables.Add(spec.id, std::move(table));
}

} // namespace zelvar::reader
