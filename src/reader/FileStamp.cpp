#include "zelvar/reader/FileStamp.h"

#include "zelvar/data/BDIMoniker.h"
#include "zelvar/data/DataFolderLook.h"
#include "zelvar/data/SeriesPlace.h"

#include <sys/stat.h>

namespace zelvar::reader {

namespace {

FileStamp StampOfPath(DString const &path) {
    constexpr std::int64_t second = 1'000'000'000;
    struct stat info {};
    if (path.empty() || stat(path.c_str(), &info) != 0)
        return {};
    // What makes a folder data may be written anew without the folder's notice.
    if (S_ISDIR(info.st_mode))
        if (std::optional<FoundDataFolder> const data = LookForDataFolder(path))
            return {.modified = data->modified, .size = info.st_size};
    return {.modified = std::int64_t{info.st_mtim.tv_sec} * second + info.st_mtim.tv_nsec, .size = info.st_size};
}

} // namespace

FileStamp StampOf(DString const &name) {
    if (FileStamp const itself = StampOfPath(name); itself.IsThere())
        return itself;
    BDIMoniker const moniker(name, nullptr);
    // A series changes with its folder.
    if (auto const series = SeriesPlace::Of(moniker.GetSource()); series && moniker.FindFile().empty())
        return StampOfPath(series->folder);
    return StampOfPath(moniker.FindFile());
}

} // namespace zelvar::reader
