#include "zelvar/data/RDIDriverMngr.h"

#include "zelvar/data/DriverProvider.h"
#include "zelvar/data/DriverTable.h"

#include <utility>

namespace zelvar {

struct RDIDriverMngr::Impl {
    DriverTable<RDIDriver> table;
};

RDIDriverMngr::RDIDriverMngr() : m_impl(std::make_unique<Impl>()) {}
RDIDriverMngr::~RDIDriverMngr() = default;

RDIDriverMngr *RDIDriverMngr::Instance() {
    static auto &manager = *new RDIDriverMngr; // never destroyed: workers may still ask while the process ends
    return &manager;
}

RDIDriver *RDIDriverMngr::GetDriver(char const *id) {
    EnsureDrivers();
    return m_impl->table.Find(id);
}

bool RDIDriverMngr::OpenFile(BDIMoniker const &moniker, RDIDriver **driver, void **handle, char const *options,
                             DError *error, char const *driverId, StopSignal const *stop) {
    EnsureDrivers();
    *driver = nullptr;
    *handle = nullptr;
    BDIMoniker const full = moniker.WithOptions(options == nullptr ? "" : options);
    DError reason;
    if (full.IsEmpty()) {
        reason.Set("nothing to open");
    } else if (RDIDriver *named = m_impl->table.Find(driverId); named != nullptr) {
        *driver = named;
        *handle = named->OpenFile(full, stop, &reason);
    } else {
        *handle = m_impl->table.OpenFirst(
            [&](RDIDriver &candidate) { return candidate.OpenFileInFamily(full, driver, stop, &reason); });
    }
    if (*handle != nullptr)
        return true;
    *driver = nullptr;
    if (!reason.IsSet())
        reason.Set("no driver reads \"" + full.GetText() + "\"");
    Report::TraceMessage(Report::kTraceDriver, "%s", reason.Text().c_str());
    if (error != nullptr)
        *error = reason;
    return false;
}

std::vector<RDIDriver *> const &RDIDriverMngr::Drivers() {
    EnsureDrivers();
    return m_impl->table.Drivers();
}

void RDIDriverMngr::Add(std::unique_ptr<RDIDriver> driver) { m_impl->table.Add(std::move(driver), false); }

void RDIDriverMngr::Reset() {
    m_impl->table.Clear();
    ForgetDrivers();
}

} // namespace zelvar
