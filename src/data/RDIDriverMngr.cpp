#include "zelvar/data/RDIDriverMngr.h"

#include "zelvar/data/DriverTable.h"
#include "zelvar/data/SeriesPlace.h"

#include <tuple>
#include <utility>

namespace zelvar {

namespace {

/// The driver's id among the options; empty without one.
DString NamedDriver(BDIMoniker const &moniker) {
    if (moniker.GetText().find(kDriverOption) == DString::npos)
        return {}; // options are looked for on the disk
    for (auto const &[name, value] : moniker.GetOptions())
        if (name == kDriverOption)
            return PercentDecoded(value);
    return {};
}

} // namespace

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
    DString const inOptions = driverId == nullptr || *driverId == '\0' ? NamedDriver(full) : DString();
    if (!inOptions.empty())
        driverId = inOptions.c_str();
    RDIDriver *const ofSeries = m_impl->table.Find(kSeriesDriver);
    auto const openWith = [&](RDIDriver &named) {
        *driver = &named;
        return OpenNoting(reason, [&](DError *failure) { return named.OpenFile(full, stop, failure); });
    };
    if (full.IsEmpty())
        reason.Set("nothing to open", DError::Cause::Missing);
    else if (ofSeries != nullptr && m_impl->table.Find(driverId) == nullptr && SeriesOf(full))
        *handle = openWith(*ofSeries);
    // On a server nobody has looked whether a file is called so.
    if (*handle == nullptr && (!reason.IsSet() || full.IsUrl()))
        *handle = m_impl->table.OpenNamedOrFirst(driverId, openWith, [&](RDIDriver &candidate) {
            return OpenNoting(reason, [&](DError *failure) {
                return &candidate == ofSeries ? nullptr : candidate.OpenFileInFamily(full, driver, stop, failure);
            });
        });
    if (*handle == nullptr)
        *driver = nullptr;
    return IsOpened(*handle, reason, "no driver reads \"" + full.GetText() + "\"", error);
}

std::vector<DString> RDIDriverMngr::FindDrivers(DString const &path) {
    EnsureDrivers();
    std::vector<DString> ids;
    if (SeriesOf({path, nullptr}))
        return ids;
    RDIDriver *const ofSeries = m_impl->table.Find(kSeriesDriver);
    std::ignore = m_impl->table.OpenFirst([&](RDIDriver &driver) -> void * {
        if (&driver != ofSeries)
            for (DString &id : driver.FindInFamily(path.c_str()))
                ids.push_back(std::move(id));
        return nullptr; // the next one
    });
    return ids;
}

std::vector<RDIDriver *> const &RDIDriverMngr::Drivers() {
    EnsureDrivers();
    return m_impl->table.Drivers();
}

void RDIDriverMngr::Add(std::unique_ptr<RDIDriver> driver) { m_impl->table.Add(std::move(driver), false); }

void RDIDriverMngr::Reset() { ForgetDrivers(); }

} // namespace zelvar
