#pragma once

#include "zelvar/data/tables/ADIDriver.h"

#include <memory>
#include <vector>

namespace zelvar {

/// Attribute data interface driver manager. The drivers come from the same provider as `BDIDrvrMngr`'s.
class ZELVAR_API ADIDriverMngr {
public:
    static ADIDriverMngr *Instance();

    /// Driver by id (case not regarded), or null.
    ADIDriver *GetDriver(char const *id);
    /// Opens the table: with `driverId` of a known driver by that one, else by the first that does. Sets `*driver` and
    /// `*handle`; false, with the reason in `*error` (may be null), if nothing opens. A file opens with drivers that do
    /// not reach out; only a moniker that is an address may use the network.
    bool OpenTable(BDIMoniker const &moniker, ADIDriver **driver, void **handle, DError *error, char const *driverId,
                   StopSignal const *stop = nullptr);
    std::vector<ADIDriver *> const &Drivers();

    void Add(std::unique_ptr<ADIDriver> driver);
    /// See `BDIDrvrMngr::Reset`.
    void Reset();

private:
    ADIDriverMngr();
    ~ADIDriverMngr();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zelvar
