#include "zelvar/data/ADIDriverMngr.h"

#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/DriverTable.h"

#include <utility>

namespace zelvar {

struct ADIDriverMngr::Impl {
    DriverTable<ADIDriver> table;
};

ADIDriverMngr::ADIDriverMngr() : m_impl(std::make_unique<Impl>()) {
    OnForgetDrivers([this] { m_impl->table.Clear(); });
}
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
    if (moniker.IsEmpty()) {
        reason.Set("nothing to open");
    } else {
        if (ADIDriver *named = m_impl->table.Find(driverId); named != nullptr) {
            *driver = named;
            *handle = named->OpenTable(moniker, stop, &reason);
        }
        if (*handle == nullptr)
            *handle = m_impl->table.OpenFirst(
                [&](ADIDriver &candidate) { return candidate.OpenTableInFamily(moniker, driver, stop, &reason); });
    }
    if (*handle != nullptr)
        return true;
    *driver = nullptr;
    if (!reason.IsSet())
        reason.Set("no driver reads \"" + moniker.GetText() + "\" as a table");
    Report::TraceMessage(Report::kTraceDriver, "%s", reason.Text().c_str());
    if (error != nullptr)
        *error = reason;
    return false;
}

std::vector<ADIDriver *> const &ADIDriverMngr::Drivers() {
    EnsureDrivers();
    return m_impl->table.Drivers();
}

void ADIDriverMngr::Add(std::unique_ptr<ADIDriver> driver) { m_impl->table.Add(std::move(driver), false); }

void ADIDriverMngr::Reset() {
    m_impl->table.Clear();
    ForgetDrivers();
}

} // namespace zelvar
