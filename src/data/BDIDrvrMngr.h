#pragma once

#include "zelvar/base/Report.h"
#include "zelvar/data/BDIDrvr.h"
#include "zelvar/data/DriverProvider.h"

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
    /// The driver that reads files of a format, by the format's id; null for a null or empty one, and for a format that
    /// no driver reads.
    BDIDrvr *FindDriverByFrmt(char const *formatId) { return GetDrvr(formatId); }
    /// The first driver that opens `url`: sets `*driver` and `*root`, yields the repository handle, or null with the
    /// reason in `*error`.
    void *OpenFile(char const *url, BDIDrvr **driver, BDINode **root, char const *filter, DError *error);
    /// All drivers in order; the manager owns them.
    std::vector<BDIDrvr *> const &Drivers();
    /// Drivers with "BDI_Multiple_Images" that may claim a file of that name: the others need not be asked. In order.
    /// One look into a table by the name's extension, so that a listing of 100,000 files costs next to nothing. A name
    /// without an extension, or with one that no driver knows, gives none: to look into each such file would cost an
    /// open and a read. `BDIDrvr::CanReadPath` itself goes by content and finds them all, see `FindContainerDriver`.
    std::vector<BDIDrvr *> const &CandidatesFor(std::string_view fileName);
    /// The first driver that reads the file at `path` as a tree of several, whatever it is called: those that its name
    /// stands for are asked first, then all others with "BDI_Multiple_Images". Null if there is none, see also
    /// `RequestScope::IsUnanswered`. For a file that somebody has named; not for each of a folder.
    BDIDrvr *FindContainerDriver(DString const &path);

    /// Adds a driver behind the others; the manager owns it. Not while another thread asks: the lists given out change.
    void Add(std::unique_ptr<BDIDrvr> driver);
    /// Removes the drivers of all managers and forgets that the provider was asked. For tests; nothing may be open.
    void Reset();

private:
    BDIDrvrMngr();
    ~BDIDrvrMngr();
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zelvar
