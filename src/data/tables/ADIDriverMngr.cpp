#include "zelvar/data/tables/ADIDriverMngr.h"

#include "zelvar/data/DriverTable.h"

#include <utility>

namespace zelvar {

struct ADIDriverMngr::Impl {
    DriverTable<ADIDriver> table;
};

ADIDriverMngr::ADIDriverMngr() : m_impl(std::make_unique<Impl>()) {}
ADIDriverMngr::~ADIDriverMngr() = default;

ADIDriverMngr *ADIDriverMngr::Instance() {
    static auto &manager = *new ADIDriverMngr; // never destroyed: workers may still ask while the process ends
    return &manager;
}

ADIDriver *ADIDriverMngr::GetDriver(char const *id) {
    EnsureDrivers();
    return m_impl->table.Find(id);
}

bool ADIDriverMngr::OpenTable(BDIMoniker const &moniker, ADIDriver **driver, void **handle, DError *error,
                              char const *driverId, StopSignal const *stop) {
    EnsureDrivers();
    *driver = nullptr;
    *handle = nullptr;
    DError reason;
    if (moniker.IsEmpty())
        reason.Set("nothing to open", DError::Cause::Missing);
    else
        *handle = m_impl->table.OpenNamedOrFirst(
            driverId,
            [&](ADIDriver &named) {
                *driver = &named;
                return OpenNoting(reason, [&](DError *failure) { return named.OpenTable(moniker, stop, failure); });
            },
            [&](ADIDriver &candidate) {
                return OpenNoting(reason, [&](DError *failure) {
                    return candidate.OpenTableInFamily(moniker, driver, stop, failure);
                });
            });
    if (*handle == nullptr)
        *driver = nullptr;
    return IsOpened(*handle, reason, "no driver reads \"" + moniker.GetText() + "\" as a table", error);
}

std::vector<ADIDriver *> const &ADIDriverMngr::Drivers() {
    EnsureDrivers();
    return m_impl->table.Drivers();
}

void ADIDriverMngr::Add(std::unique_ptr<ADIDriver> driver) { m_impl->table.Add(std::move(driver), false); }

void ADIDriverMngr::Reset() { ForgetDrivers(); }

} // namespace zelvar
