#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/RDIDriver.h"

#include <memory>
#include <vector>

namespace zelvar {

/// Names the driver that a moniker is to be opened with, by its id, among the moniker's options.
inline constexpr char kDriverOption[] = "DRIVER";

/// Raster data interface driver manager. The drivers come from the same provider as `BDIDrvrMngr`'s.
class ZELVAR_API RDIDriverMngr {
public:
    static RDIDriverMngr *Instance();

    /// Driver by id (case not regarded), or null.
    RDIDriver *GetDriver(char const *id);
    /// Opens the data: with `driverId` of a known driver by that one, without an id by the one that the moniker's
    /// options name (`kDriverOption`), else by the first that does. Sets
    /// `*driver` and `*handle`; false, with the reason in `*error` (may be null), if nothing opens. A file opens with
    /// drivers that do not reach out; only a moniker that is an address may use the network. `options` is added to the
    /// moniker's own. What names a series of files (`SeriesOf`) is for the driver of series; nothing else is.
    bool OpenFile(BDIMoniker const &moniker, RDIDriver **driver, void **handle, char const *options, DError *error,
                  char const *driverId, StopSignal const *stop = nullptr);
    /// Ids of the drivers that take the file or address for theirs, the one that opens it first in front. Empty for a
    /// series of files, and for an address where each question would be a request.
    std::vector<DString> FindDrivers(DString const &path);
    std::vector<RDIDriver *> const &Drivers();

    void Add(std::unique_ptr<RDIDriver> driver);
    /// See `BDIDrvrMngr::Reset`.
    void Reset();

private:
    RDIDriverMngr();
    ~RDIDriverMngr();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zelvar
