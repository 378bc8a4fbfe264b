#include "zelvar/opends/OpenFactsReading.h"

#include "zelvar/data/PlaceCheck.h"
#include "zelvar/data/RDIDriverMngr.h"
#include "zelvar/data/RequestScope.h"
#include "zelvar/data/tables/ADIDriverMngr.h"
#include "zelvar/platform/os/SmbAddress.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace zelvar {

namespace {

BDIMoniker MonikerOf(OpenSubject const &subject) {
    return {subject.options.empty() ? subject.path : subject.path + "?" + subject.options, nullptr};
}

std::optional<TableInfo> ReadTableInfo(OpenSubject const &subject, StopSignal const *stop, DError &error) {
    RequestScope const scope(RequestKind::Properties);
    ADIDriver *driver = nullptr;
    void *handle = nullptr;
    if (!ADIDriverMngr::Instance()->OpenTable(MonikerOf(subject), &driver, &handle, &error, "", stop))
        return std::nullopt;
    TableInfo table{.driver = driver->GetInfo(), .columns = driver->GetColumns(handle).size()};
    driver->CloseTable(handle);
    return table;
}

/// Why a path on disk, or what a moniker names there, is not for this user; not set if it is.
DError AccessError(OpenSubject const &subject) {
    DError error;
    BDIMoniker const moniker = MonikerOf(subject);
    if (moniker.IsUrl() || !DoesPlaceAnswer(subject.path))
        return error;
    DString const onDisk = moniker.FindFile();
    DString const &path = onDisk.empty() ? subject.path : onDisk;
    if (access(path.c_str(), R_OK) == 0)
        return error;
    int const code = errno;
    error.Set(std::generic_category().message(code), code == EACCES || code == EPERM     ? DError::Cause::NotPermitted
                                                     : code == ENOENT || code == ENOTDIR ? DError::Cause::Missing
                                                                                         : DError::Cause::Unknown);
    return error;
}

} // namespace

OpenFacts CompleteFacts(OpenSubject const &subject, OpenWish const &wish, std::optional<ImageInfo> image, DError error,
                        StopSignal const *stop) {
    OpenFacts facts;
    facts.image = std::move(image);
    facts.error = std::move(error);
    if (facts.Opens(wish) || (stop != nullptr && *stop))
        return facts;
    if (wish.table) {
        DError reason;
        facts.table = ReadTableInfo(subject, stop, reason);
        if (!facts.error.IsSet() || facts.error.Why() == DError::Cause::Unknown)
            facts.error = std::move(reason);
    } else if (!wish.IsTold()) {
        facts.error = AccessError(subject);
    }
    return facts;
}

std::vector<DString> FindOpeningDrivers(OpenSubject const &subject, StopSignal const *stop) {
    std::vector<DString> ids;
    {
        RequestScope const scope(RequestKind::Probe, {}, kNamedProbe);
        ids = RDIDriverMngr::Instance()->FindDrivers(BDIMoniker(subject.path, nullptr).GetSource());
    }
    ImageInfo image;
    auto const fails = [&](DString const &id) { return !ReadImageInfo({subject.path, nullptr}, id, stop, image); };
    if (ids.size() > 1)
        ids.erase(std::remove_if(ids.begin() + 1, ids.end(), fails), ids.end());
    return ids.size() > 1 ? ids : std::vector<DString>();
}

OpenFacts ReadOpenFacts(OpenSubject const &subject, OpenWish const &wish, StopSignal const *stop) {
    ImageInfo image;
    DError error;
    bool isImage = false;
    if (platform::IsSmbAddress(subject.path) && !DoesPlaceAnswer(subject.path))
        error.Set("its place does not answer", DError::Cause::NoAnswer);
    else if (wish.IsTold())
        isImage = ReadImageInfo(MonikerOf(subject), subject.driverId, stop, image, &error);
    return CompleteFacts(subject, wish, isImage ? std::optional(image) : std::nullopt, std::move(error), stop);
}

} // namespace zelvar
