#include "zelvar/base/PathStyle.h"
#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/reader/Readers.h"
#include "zelvar/platform/os/MountTable.h"

#include <fstream>

namespace zelvar {

namespace {

DString ServerOf(DString const &url) {
    std::size_t const begin = url.find("://");
    return begin == DString::npos ? url : url.substr(0, url.find('/', begin + 3));
}

/// The deepest mount point above a path.
DString MountPointOf(std::string_view path) {
    DString deepest = "/";
    std::ifstream table("/proc/self/mountinfo");
    for (DString line; std::getline(table, line);) {
        auto const entry = platform::ParseMountLine(line);
        if (!entry || entry->mountPoint.size() <= deepest.size() || !path.starts_with(entry->mountPoint))
            continue;
        if (path.size() == entry->mountPoint.size() || path[entry->mountPoint.size()] == '/')
            deepest = entry->mountPoint;
    }
    return deepest;
}

} // namespace

DString PlaceOfMoniker(DString const &moniker) {
    if (BDIMoniker(moniker, nullptr).IsUrl())
        return ServerOf(moniker);
    std::size_t const slash = moniker.find('/'); // behind what a driver puts before a path
    return slash == DString::npos ? moniker : MountPointOf(std::string_view(moniker).substr(slash));
}

} // namespace zelvar
