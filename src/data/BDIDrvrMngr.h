#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDIDrvr.h"

#include <functional>
#include <memory>
#include <vector>

namespace zelvar {

/// Block data interface driver manager: all tree drivers of the process, in order.
///
/// The drivers come from the provider at the first question, so that a listing without data files loads none.
class ZELVAR_API BDIDrvrMngr {
public:
    static BDIDrvrMngr *Instance();

    /// Driver by id (case not regarded), or null.
    BDIDrvr *GetDrvr(char const *id);
    /// The first driver that opens `url`: sets `*driver` and `*root`, yields the repository handle, or null with the
    /// reason in `*error`.
    void *OpenFile(char const *url, BDIDrvr **driver, BDINode **root, char const *filter, DError *error);
    /// All drivers in order; the manager owns them.
    std::vector<BDIDrvr *> const &Drivers();
    /// Drivers with "BDI_Multiple_Images" that may claim a file of that name: the others need not be asked. In order.
    std::vector<BDIDrvr *> const &CandidatesFor(std::string_view fileName);

    /// Adds a driver behind the others; the manager owns it.
    void Add(std::unique_ptr<BDIDrvr> driver);
    /// Removes all drivers and forgets that the provider was asked. For tests; no repository may be open.
    void Reset();

private:
    BDIDrvrMngr();
    ~BDIDrvrMngr();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

/// Where drivers come from: called once, at the first question to either manager. `library/` sets the one that loads
/// the GDAL module; a program may set its own before the first use.
using DriverProvider = std::function<void()>;
ZELVAR_API void SetDriverProvider(DriverProvider provider);
/// Runs the provider unless it has run. Any thread.
ZELVAR_API void EnsureDrivers();

} // namespace zelvar
